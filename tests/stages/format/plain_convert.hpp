// The converters once more, in plain loops over tightly packed planes, and images of exact size for them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/records.hpp"
#include "biseam/records.h"
#include "support/random_source.hpp"

namespace biseam::test {

inline int rounded(double value) {
  const float single = static_cast<float>(value);
  const int whole = static_cast<int>(single + 0.5);
  return whole < 0 ? 0 : whole > 255 ? 255 : whole;
}

struct Rgb {
  int r, g, b;
};

inline Rgb pixel_of(int y, int u, int v) {
  const double red = 1.402 * (v - 128), green_u = 0.3441 * (u - 128), green_v = 0.7141 * (v - 128), blue = 1.772 * (u - 128);
  return {rounded(y + red), rounded(y - green_u - green_v), rounded(y + blue)};
}

inline int luma_of(int r, int g, int b) { return rounded(0.299 * r + 0.587 * g + 0.114 * b); }

// Tightly packed YUV to RGB as the pair loops go, four (or two) pixels a block; what has no place in its plane is left out.
template <class Sample>
std::vector<Sample> naive_to_rgb(const std::vector<uint8_t>& luma, const std::vector<uint8_t>& chroma, int width, int height,
                                 int block_rows, Sample poison) {
  std::vector<Sample> out(size_t(width) * size_t(height) * 3, poison);
  const auto chroma_at = [&](size_t i) {
    while (i >= chroma.size()) {
      if (i < 2) return 128;
      i -= 2;
    }
    return int{chroma[i]};
  };
  for (int y = 0; y < height; y += block_rows) {
    for (int x = 0; x < width; x += 2) {
      const size_t pair = size_t(x + width * (y / block_rows));
      const int u = chroma_at(pair), v = chroma_at(pair + 1);
      for (int dy = 0; dy < block_rows; ++dy) {
        for (int dx = 0; dx < 2; ++dx) {
          const size_t at = size_t(x + dx + width * (y + dy));
          if (at >= luma.size()) continue;
          const Rgb p = pixel_of(luma[at], u, v);
          out[3 * at] = static_cast<Sample>(p.r);
          out[3 * at + 1] = static_cast<Sample>(p.g);
          out[3 * at + 2] = static_cast<Sample>(p.b);
        }
      }
    }
  }
  return out;
}

struct YuvPlanes {
  std::vector<uint8_t> luma, chroma;
  bool operator==(const YuvPlanes&) const = default;
};

inline size_t chroma_bytes(int width, int height, int block_rows) {
  return size_t(width) * size_t(height) / size_t(block_rows);
}

// Tightly packed RGB to YUV in the same manner: luma pixels x and x + 1 with each block, the block's second row in a second
// pass.
inline YuvPlanes naive_to_yuv(const std::vector<int32_t>& rgb, int width, int height, int block_rows, uint8_t poison) {
  YuvPlanes out{std::vector<uint8_t>(size_t(width) * size_t(height), poison),
                std::vector<uint8_t>(chroma_bytes(width, height, block_rows), poison)};
  const auto pixel = [&](int x, int y) {
    for (;; --y) {
      if (size_t(x + width * y) < out.luma.size()) return &rgb[3 * size_t(x + width * y)];
      if (x >= width && size_t(x - 1 + width * y) < out.luma.size()) return &rgb[3 * size_t(x - 1 + width * y)];
    }
  };
  const auto put_luma = [&](int x, int y) {
    const size_t at = size_t(x + width * y);
    if (at >= out.luma.size()) return;
    const int32_t* p = &rgb[3 * at];
    out.luma[at] = static_cast<uint8_t>(luma_of(p[0] >> 6, p[1] >> 6, p[2] >> 6));
  };
  for (int y = 0; y < height; y += block_rows) {
    for (int x = 0; x < width; x += 2) {
      put_luma(x, y);
      put_luma(x + 1, y);
      float mean[3];
      for (int c = 0; c < 3; ++c) {
        uint32_t sum = 0;
        for (int dy = 0; dy < block_rows; ++dy) {
          for (int dx = 0; dx < 2; ++dx) sum += static_cast<uint32_t>(pixel(x + dx, y + dy)[c]);
        }
        mean[c] = static_cast<float>(static_cast<int32_t>(sum) >> 6) * (block_rows == 2 ? 0.25f : 0.5f);
      }
      const double r = mean[0], g = mean[1], b = mean[2];
      const size_t at = size_t(x + width * (y / block_rows));
      if (at < out.chroma.size()) out.chroma[at] = static_cast<uint8_t>(rounded(-0.1687 * r - 0.3313 * g + 0.5 * b + 128.0));
      if (at + 1 < out.chroma.size()) {
        out.chroma[at + 1] = static_cast<uint8_t>(rounded(0.5 * r - 0.4187 * g - 0.0813 * b + 128.0));
      }
    }
    if (block_rows == 2) {
      for (int x = 0; x < width; ++x) put_luma(x, y + 1);
    }
  }
  return out;
}

inline YuvPlanes random_yuv(RandomSource& random, int width, int height, int block_rows) {
  YuvPlanes planes{std::vector<uint8_t>(size_t(width) * size_t(height)),
                   std::vector<uint8_t>(chroma_bytes(width, height, block_rows))};
  for (uint8_t& y : planes.luma) y = random.byte();
  for (uint8_t& c : planes.chroma) c = random.byte();
  return planes;
}

inline YuvView view_of(YuvPlanes& planes, int width, int height) {
  return {planes.luma.data(), planes.chroma.data(), width, height, width, width};
}

inline std::vector<int32_t> random_rgb(RandomSource& random, int width, int height, bool any_value) {
  std::vector<int32_t> rgb(3 * size_t(width) * size_t(height));
  for (int32_t& s : rgb) s = any_value ? static_cast<int32_t>(random.word()) : random.between(-2000, 64 * 255 + 4000);
  return rgb;
}

inline ImageHeader header_of(YuvPlanes& planes, int width, int height, int format) {
  ImageHeader image{};
  image.width = width;
  image.height = height;
  image.planes[0] = planes.luma.data();
  image.planes[1] = planes.chroma.data();
  image.strides[0] = image.strides[1] = width;
  image.format = format;
  return image;
}

inline BlendImage blend_image_of(int32_t* samples, int width, int height) {
  BlendImage image{};
  image.data[0] = samples;
  describe_blend_image(image, width, height);
  return image;
}

}  // namespace biseam::test
