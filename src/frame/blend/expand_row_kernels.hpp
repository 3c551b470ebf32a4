#pragma once

#include <cstddef>
#include <cstdint>

#include "base/variants.hpp"

// The versions behind expand_row.hpp.
namespace biseam {

// Pixels of three channels that have a neighbour on both sides.
using ExpandPixels = void(const int32_t* src, int32_t* row, ptrdiff_t pixels) noexcept;

void expand_pixels_avx2(const int32_t* src, int32_t* row, ptrdiff_t pixels) noexcept;
void expand_pixels_avx512(const int32_t* src, int32_t* row, ptrdiff_t pixels) noexcept;
void expand_pixels_neon(const int32_t* src, int32_t* row, ptrdiff_t pixels) noexcept;

extern const Variants<ExpandPixels> kExpandPixels;

}  // namespace biseam
