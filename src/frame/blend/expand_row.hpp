#pragma once

#include <cstddef>
#include <cstdint>

#include "base/variants.hpp"

namespace biseam {

// Pixels of three channels that have a neighbour on both sides.
using ExpandPixels = void(const int32_t* src, int32_t* row, ptrdiff_t pixels) noexcept;
ExpandPixels expand_pixels_scalar, expand_pixels_neon, expand_pixels_avx2, expand_pixels_avx512;
extern const Variants<ExpandPixels> kExpandPixels;

// A row of width >= 1 pixels of three 32-bit samples to twice as many pixels of sums, as expand_pixel and expand_outer_pixels
// make them; they wrap.
void expand_row(const int32_t* src, int32_t* row, ptrdiff_t width) noexcept;

}  // namespace biseam
