#include "picture/picture.hpp"

#include <algorithm>
#include <cmath>

namespace biseam::tool {
namespace {

struct Ycc {
  double y, cb, cr;  // chroma around 0
};

Ycc convert(const std::uint8_t* rgb) {
  const double y = 0.299 * rgb[0] + 0.587 * rgb[1] + 0.114 * rgb[2];
  return {y, (rgb[2] - y) / 1.772, (rgb[0] - y) / 1.402};
}

std::uint8_t to_byte(double value) { return std::uint8_t(std::clamp(std::floor(value + 0.5), 0.0, 255.0)); }

}  // namespace

void rgb_to_ycc(const std::uint8_t* rgb, std::uint8_t* ycc) {
  const Ycc c = convert(rgb);
  ycc[0] = to_byte(c.y);
  ycc[1] = to_byte(c.cb + 128);
  ycc[2] = to_byte(c.cr + 128);
}

void ycc_to_rgb(const std::uint8_t* ycc, std::uint8_t* rgb) {
  const double y = ycc[0], cb = ycc[1] - 128.0, cr = ycc[2] - 128.0;
  rgb[0] = to_byte(y + 1.402 * cr);
  rgb[1] = to_byte(y - (0.114 * 1.772 * cb + 0.299 * 1.402 * cr) / 0.587);
  rgb[2] = to_byte(y + 1.772 * cb);
}

Nv12 to_nv12(const Rgb& picture) {
  Nv12 out(picture.width & ~1, picture.height & ~1);
  const std::size_t row_bytes = std::size_t(picture.width) * 3, width = std::size_t(out.width);
  for (std::size_t y = 0; y < std::size_t(out.height); y += 2) {
    for (std::size_t x = 0; x < width; x += 2) {
      double cb = 0, cr = 0;
      for (std::size_t k = 0; k < 4; ++k) {
        const std::size_t px = x + k % 2, py = y + k / 2;
        const Ycc c = convert(&picture.bytes[py * row_bytes + px * 3]);
        out.luma[py * width + px] = to_byte(c.y);
        cb += c.cb;
        cr += c.cr;
      }
      std::uint8_t* pair = &out.chroma[y / 2 * width + x];
      pair[0] = to_byte(cb / 4 + 128);
      pair[1] = to_byte(cr / 4 + 128);
    }
  }
  return out;
}

Rgb to_rgb(const Nv12& picture) {
  Rgb out(picture.width, picture.height);
  const std::size_t width = std::size_t(picture.width);
  for (std::size_t y = 0; y < std::size_t(picture.height); ++y) {
    for (std::size_t x = 0; x < width; ++x) {
      const std::uint8_t* pair = &picture.chroma[y / 2 * width + (x & ~std::size_t(1))];
      const std::uint8_t ycc[3] = {picture.luma[y * width + x], pair[0], pair[1]};
      ycc_to_rgb(ycc, &out.bytes[(y * width + x) * 3]);
    }
  }
  return out;
}

}  // namespace biseam::tool
