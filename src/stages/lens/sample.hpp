#pragma once

#include <cstddef>
#include <cstdint>

#include "base/truncate.hpp"

// The samples that a table entry names, mixed.  No position is checked against the source's size.
namespace biseam {

// Unsigned arithmetic of the host's own width, so that nothing overflows however large the picture is.
inline const uint8_t* locate(const uint8_t* plane, std::ptrdiff_t stride, uint32_t row, std::size_t byte) noexcept {
  return plane + static_cast<std::ptrdiff_t>(std::size_t{row} * static_cast<std::size_t>(stride) + byte);
}

// A position split into the sample that is read and the fraction beyond.  The fraction of a negative coordinate stays negative.
struct SplitPosition {
  uint32_t column, row;
  float fx, fy;
};

inline SplitPosition split_position(float u, float v) noexcept {
  const uint32_t column = truncate_to_unsigned(u), row = truncate_to_unsigned(v);
  return {column, row, u - static_cast<float>(column), v - static_cast<float>(row)};
}

inline uint8_t low_byte(float value) noexcept { return static_cast<uint8_t>(truncate_to_unsigned(value)); }

// entry: u, v in luma pixels.  Mixes a pixel with the one below; the horizontal neighbour is not read.
inline uint8_t sample_luma(const float* entry, const uint8_t* source, std::ptrdiff_t stride) noexcept {
  const auto [column, row, fx, fy] = split_position(entry[0], entry[1]);
  const uint8_t* pixel = locate(source, stride, row, column);
  const float upper = pixel[0], lower = pixel[stride], product = fx * fy;
  // Four bilinear weights on two pixels: their float rounding is part of the result.
  return low_byte((fx - product) * upper + ((1.0f - fy) - (fx - product)) * upper + (fy - product) * lower + product * lower);
}

// The same entry divided by the chroma factors; writes a pair.  Bilinear.
inline void sample_chroma(const float* entry, float x_factor, float y_factor, const uint8_t* source, std::ptrdiff_t stride,
                          uint8_t* pair) noexcept {
  const auto [column, row, fx, fy] = split_position(entry[0] / x_factor, entry[1] / y_factor);
  const uint8_t* upper = locate(source, stride, row, 2 * std::size_t{column});
  const uint8_t* lower = upper + stride;
  const float w10 = fx - fx * fy, w00 = (1.0f - fy) - w10, w01 = fy - fx * fy, w11 = fx * fy;
  for (int component = 0; component < 2; ++component) {
    pair[component] =
        low_byte(w00 * upper[component] + w10 * upper[component + 2] + w01 * lower[component] + w11 * lower[component + 2]);
  }
}

}  // namespace biseam
