#pragma once

#include <cstdint>

#include "biseam/records.h"

// Weights that a cut writes into its mask.  Nothing writes a 0: 64s of earlier cuts stay.  What lies outside the mask is left
// out.
namespace biseam {

// Width of the frame around the strip that labels do not reach.
inline constexpr int32_t kSeamBorder = 2;

// Whether a strip of that size has an inside.
constexpr bool has_labels(int32_t width, int32_t height) noexcept {
  return width > 2 * kSeamBorder && height > 2 * kSeamBorder;
}

// Columns [first, end) of row y.
void fill_span(BlendImage& mask, int64_t y, int64_t first, int64_t end) noexcept;

// What does not depend on the labels of a strip of that height, whose first column is mask column offset: the left halves of
// its first and last rows, and all left of its inside.
void fill_surroundings(BlendImage& mask, int32_t height, int64_t offset) noexcept;

// The inside of a height x width strip, where on_source_side(r, c).
template <class OnSourceSide>
void fill_source_side(BlendImage& mask, int32_t height, int32_t width, int64_t offset, OnSourceSide on_source_side) {
  for (int32_t r = kSeamBorder; r < height - kSeamBorder; ++r) {
    int32_t first = kSeamBorder;  // of the stretch that ends before column c
    for (int32_t c = kSeamBorder; c < width - kSeamBorder; ++c) {
      if (on_source_side(r, c)) continue;
      fill_span(mask, r, offset + first, offset + c);
      first = c + 1;
    }
    fill_span(mask, r, offset + first, offset + width - kSeamBorder);
  }
}

}  // namespace biseam
