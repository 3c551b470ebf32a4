#include "sheet/contact_sheet.hpp"

#include <algorithm>
#include <cmath>

#include "sheet/shrink.hpp"
#include "text/lettering.hpp"

namespace biseam::tool {
namespace {

constexpr std::uint8_t kPaper[3] = {24, 26, 30}, kInk[3] = {232, 230, 224};

void paste(const Rgb& picture, int left, int top, Rgb& page) {
  for (int y = 0; y < picture.height; ++y) {
    const auto row = std::size_t(picture.width) * 3;
    std::copy_n(&picture.bytes[std::size_t(y) * row], row,
                &page.bytes[(std::size_t(top + y) * std::size_t(page.width) + std::size_t(left)) * 3]);
  }
}

struct Line {
  int left, top, width;  // of its area, which is twice as high as its letters
  double size;           // of letters
};

// What doesn't fit is cut off.
void write_line(const std::string& text, const Line& line, Rgb& page) {
  const auto [left, top, width, size] = line;
  const Lettering lettering(text, 0.14);
  for (int y = 0; y < int(2 * size); ++y) {
    for (int x = 0; x < width; ++x) {
      const double ink = lettering.ink((x - 0.2 * size) / size, (y - 0.5 * size) / size, 1 / size);
      std::uint8_t* pixel = &page.bytes[(std::size_t(top + y) * std::size_t(page.width) + std::size_t(left + x)) * 3];
      for (int c = 0; c < 3; ++c) pixel[c] = std::uint8_t(std::lround(pixel[c] + ink * (kInk[c] - pixel[c])));
    }
  }
}

}  // namespace

Rgb contact_sheet(const std::vector<Panel>& panels, const SheetLayout& layout) {
  const int width = layout.panel_width, count = int(panels.size()), columns = std::clamp(count, 1, layout.columns);
  const bool captions = std::any_of(panels.begin(), panels.end(), [](const Panel& panel) { return !panel.caption.empty(); });
  const int margin = count == 1 && !captions ? 0 : std::max(4, width / 80);
  const int letters = std::max(7, width / 60), line = captions ? 2 * letters : 0;

  std::vector<Rgb> small;
  int height = 1;
  for (const Panel& panel : panels) {
    const int own = std::max(1, int(std::lround(double(panel.picture.height) * width / panel.picture.width)));
    small.push_back(shrunk(panel.picture, {width, own}));
    height = std::max(height, own);
  }
  const int rows = (count + columns - 1) / columns;
  Rgb page(margin + columns * (width + margin), margin + rows * (height + line + margin));
  for (std::size_t i = 0; i < page.bytes.size(); ++i) page.bytes[i] = kPaper[i % 3];
  for (int n = 0; n < count; ++n) {
    const int left = margin + n % columns * (width + margin), top = margin + n / columns * (height + line + margin);
    paste(small[std::size_t(n)], left, top, page);
    if (captions) write_line(panels[std::size_t(n)].caption, {left, top + height, width, double(letters)}, page);
  }
  return page;
}

}  // namespace biseam::tool
