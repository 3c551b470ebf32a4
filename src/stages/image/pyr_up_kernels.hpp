#pragma once

#include <cstddef>
#include <cstdint>

#include "base/variants.hpp"

// The versions behind pyr_up_rows.hpp.
namespace biseam {

// Pixels of three channels that have a neighbour on both sides.
using ExpandPixels = void(const int32_t* src, int32_t* row, ptrdiff_t pixels) noexcept;
using ExpandRowsOn = void(const int32_t* above, const int32_t* row, const int32_t* below, int32_t* out,
                          ptrdiff_t count) noexcept;
using ExpandRowsBetween = void(const int32_t* row, const int32_t* below, int32_t* out, ptrdiff_t count) noexcept;

void expand_pixels_avx2(const int32_t* src, int32_t* row, ptrdiff_t pixels) noexcept;
void expand_pixels_avx512(const int32_t* src, int32_t* row, ptrdiff_t pixels) noexcept;
void expand_pixels_neon(const int32_t* src, int32_t* row, ptrdiff_t pixels) noexcept;

extern const Variants<ExpandPixels> kExpandPixels;
extern const Variants<ExpandRowsOn> kExpandRowsOn;
extern const Variants<ExpandRowsBetween> kExpandRowsBetween;

}  // namespace biseam
