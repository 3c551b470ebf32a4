#include "media/deep_rgb.hpp"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace biseam::tool {
namespace {

// Shares of red and blue in luma.
struct Shares {
  double red, blue;
};

Shares shares_of(AVColorSpace matrix) {
  switch (matrix) {
    case AVCOL_SPC_BT709:
      return {0.2126, 0.0722};
    case AVCOL_SPC_BT2020_NCL:
    case AVCOL_SPC_BT2020_CL:
      return {0.2627, 0.0593};
    case AVCOL_SPC_SMPTE240M:
      return {0.212, 0.087};
    case AVCOL_SPC_FCC:
      return {0.30, 0.11};
    default:
      return {0.299, 0.114};
  }
}

}  // namespace

void fill_deep_rgb(const AVFrame& yuv, bool is_full, AVFrame& rgb) {
  const AVPixFmtDescriptor &from = *av_pix_fmt_desc_get(AVPixelFormat(yuv.format)),
                           &to = *av_pix_fmt_desc_get(AVPixelFormat(rgb.format));
  const auto [red, blue] = shares_of(yuv.colorspace);
  const double green = 1 - red - blue, unit = 1 << (from.comp[0].depth - 8), most = (1u << to.comp[0].depth) - 1;
  const double full = (1 << from.comp[0].depth) - 1;
  const double black = is_full ? 0 : 16 * unit, luma = is_full ? full : 219 * unit;
  const double gray = 128 * unit, chroma = is_full ? full : 224 * unit;
  const std::size_t width = std::size_t(yuv.width);
  std::vector<std::uint16_t> line[3];
  for (auto& component : line) component.resize(width);
  const std::uint8_t* planes[4] = {yuv.data[0], yuv.data[1], yuv.data[2], nullptr};
  const auto sample = [&](double value) { return std::uint16_t(std::clamp(std::floor(value * most + 0.5), 0.0, most)); };
  for (int y = 0; y < yuv.height; ++y) {
    for (int k = 0; k < 3; ++k) av_read_image_line(line[k].data(), planes, yuv.linesize, &from, 0, y, k, yuv.width, 0);
    for (std::size_t x = 0; x < width; ++x) {
      const double bright = (line[0][x] - black) / luma, cb = (line[1][x] - gray) / chroma, cr = (line[2][x] - gray) / chroma;
      const double r = bright + 2 * (1 - red) * cr, b = bright + 2 * (1 - blue) * cb;
      line[0][x] = sample(r);
      line[1][x] = sample((bright - red * r - blue * b) / green);
      line[2][x] = sample(b);
    }
    for (int k = 0; k < 3; ++k) av_write_image_line(line[k].data(), rgb.data, rgb.linesize, &to, 0, y, k, yuv.width);
  }
}

}  // namespace biseam::tool
