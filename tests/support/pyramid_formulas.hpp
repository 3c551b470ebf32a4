#pragma once

#include <algorithm>
#include <cstdint>

#include "support/test_image.hpp"

// Reduction and expansion as double sums over the source, sample by sample.
namespace biseam::test {

// Mirrors until the coordinate lies inside; a lone sample stands for all.
inline int mirrored(int p, int len) {
  if (len == 1) return 0;
  while (p < 0 || p >= len) p = p < 0 ? -p : 2 * len - p - 2;
  return p;
}

inline int32_t floor_divided(uint32_t sum, int bits) { return static_cast<int32_t>(sum) >> bits; }

inline int32_t reduced_sample(const TestImage& src, int x, int y, int k) {
  static constexpr int weights[5] = {1, 4, 6, 4, 1};
  uint32_t sum = 128;
  for (int j = -2; j <= 2; ++j) {
    for (int i = -2; i <= 2; ++i) {
      const uint32_t weight = static_cast<uint32_t>(weights[i + 2] * weights[j + 2]);
      sum += weight * static_cast<uint32_t>(src.at(mirrored(2 * x + i, src.width()), mirrored(2 * y + j, src.height()), k));
    }
  }
  return floor_divided(sum, 8);
}

inline TestImage reduced(const TestImage& src, int width, int height) {
  TestImage dst(width, height);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      for (int k = 0; k < 3; ++k) dst.at(x, y, k) = reduced_sample(src, x, y, k);
    }
  }
  return dst;
}

// Left of the first column lies the second; right of the last one its copy.
inline int expanded_column(int i, int width) { return i < 0 ? std::min(1, width - 1) : std::min(i, width - 1); }

// The same for rows, but an odd height mirrors at the last source row as well.
inline int expanded_row(int j, int height, int dst_height) {
  if (j < 0) return std::min(1, height - 1);
  if (j < height) return j;
  return dst_height == 2 * height - 1 ? std::max(height - 2, 0) : height - 1;
}

inline int32_t expanded_sample(const TestImage& src, int dst_height, int x, int y, int k) {
  uint32_t sum = 32;
  for (int j = -1; j <= 1; ++j) {
    const int row_weight = y % 2 == 0 ? (j == 0 ? 6 : 1) : (j < 0 ? 0 : 4);
    for (int i = -1; i <= 1; ++i) {
      const int column_weight = x % 2 == 0 ? (i == 0 ? 6 : 1) : (i < 0 ? 0 : 4);
      const int column = expanded_column(x / 2 + i, src.width());
      const int row = expanded_row(y / 2 + j, src.height(), dst_height);
      sum += static_cast<uint32_t>(row_weight * column_weight) * static_cast<uint32_t>(src.at(column, row, k));
    }
  }
  return floor_divided(sum, 6);
}

// width and height: doubles of the source's, or one less.
inline TestImage expanded(const TestImage& src, int width, int height) {
  TestImage dst(width, height, src.channels());
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      for (int k = 0; k < src.channels(); ++k) dst.at(x, y, k) = expanded_sample(src, height, x, y, k);
    }
  }
  return dst;
}

}  // namespace biseam::test
