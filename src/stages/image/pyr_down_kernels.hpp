#pragma once

#include <cstddef>
#include <cstdint>

#include "base/variants.hpp"

// The versions behind pyr_down_rows.hpp.
namespace biseam {

using ReducePixels = void(const int32_t* src, int32_t* row, ptrdiff_t pixels) noexcept;
using ReduceRows = void(const int32_t* const rows[5], int32_t* out, ptrdiff_t count) noexcept;

void reduce_pixels_avx2(const int32_t* src, int32_t* row, ptrdiff_t pixels) noexcept;
void reduce_pixels_rounded_avx2(const int32_t* src, int32_t* row, ptrdiff_t pixels) noexcept;
void reduce_pixels_neon(const int32_t* src, int32_t* row, ptrdiff_t pixels) noexcept;
void reduce_pixels_rounded_neon(const int32_t* src, int32_t* row, ptrdiff_t pixels) noexcept;

extern const Variants<ReducePixels> kReducePixels, kReducePixelsRounded;
extern const Variants<ReduceRows> kSumRows, kReduceRows;

}  // namespace biseam
