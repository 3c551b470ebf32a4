#include "ring/light/scene_cut.hpp"

namespace biseam::ring {

namespace {

// Sums over cells in 1/4 codes of 8 bits.
struct Moments {
  int64_t x = 0, y = 0, xx = 0, yy = 0, xy = 0;
};

Moments moments_of(const RingImage& a, const RingImage& b) noexcept {
  Moments m;
  for (int i = 0; i < RingImage::kCells; ++i) {
    const int64_t x = a.cells[i] >> 4, y = b.cells[i] >> 4;
    m.x += x;
    m.y += y;
    m.xx += x * x;
    m.yy += y * y;
    m.xy += x * y;
  }
  return m;
}

}  // namespace

RingImage ring_image(const int16_t* luma, StripShape shape) noexcept {
  RingImage image;
  for (int around = 0; around < RingImage::kAround; ++around) {
    // Of short strips some rows count for several cells.
    const int first = around * shape.length / RingImage::kAround;
    const int next = (around + 1) * shape.length / RingImage::kAround, end = next > first ? next : first + 1;
    for (int across = 0; across < RingImage::kAcross; ++across) {
      const int low = across * shape.width / RingImage::kAcross, high = (across + 1) * shape.width / RingImage::kAcross;
      int64_t sum = 0;
      for (int t = first; t < end; ++t) {
        int32_t row = 0;
        for (int b = low; b < high; ++b) row += luma[ptrdiff_t{t} * shape.width + b];
        sum += row;
      }
      image.cells[around * RingImage::kAcross + across] = static_cast<int32_t>(sum / ((end - first) * (high - low)));
    }
  }
  return image;
}

void forget(SceneWatch& watch) noexcept { watch = {}; }

bool is_valid(const SceneWatch& watch) noexcept {
  for (const RingImage& image : watch.last) {
    for (const int32_t cell : image.cells) {
      if (cell < 0 || cell > kMaxFine) return false;
    }
  }
  return true;
}

bool is_other_scene(const RingImage& before, const RingImage& after) noexcept {
  constexpr int64_t n = RingImage::kCells, kLeastChange = 4 * 6;
  const Moments m = moments_of(before, after);
  const int64_t change = n * (m.xx + m.yy - 2 * m.xy) - (m.x - m.y) * (m.x - m.y);
  if (change < kLeastChange * kLeastChange * n * n) return false;
  const double spread0 = static_cast<double>(n * m.xx - m.x * m.x), spread1 = static_cast<double>(n * m.yy - m.y * m.y);
  // Without a pattern, as of a black frame, nothing is said.
  constexpr double kLeastSpread = 4.0 * 4 * n * n;
  if (spread0 < kLeastSpread || spread1 < kLeastSpread) return false;
  const double common = static_cast<double>(n * m.xy - m.x * m.y);
  return common <= 0 || 4 * common * common < spread0 * spread1;
}

}  // namespace biseam::ring
