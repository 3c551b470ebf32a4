#pragma once

#include <cstddef>
#include <cstdint>

#include "base/variants.hpp"

// The versions behind byte_rows.hpp.
namespace biseam {

using SumByteRows = void(const uint8_t* const rows[5], uint16_t* out, ptrdiff_t count) noexcept;
// Pixel x of the result around source pixel 2x, for pixels that have two neighbours on both sides.
using ReduceBytePixels = void(const uint16_t* sums, uint8_t* row, ptrdiff_t pixels) noexcept;
// Pixels that have a neighbour on both sides.
using ExpandBytePixels = void(const uint8_t* src, uint16_t* row, ptrdiff_t pixels) noexcept;

void reduce_byte_pixels_avx2(const uint16_t* sums, uint8_t* row, ptrdiff_t pixels) noexcept;
void reduce_byte_pixels_avx512(const uint16_t* sums, uint8_t* row, ptrdiff_t pixels) noexcept;
void reduce_byte_pixels_neon(const uint16_t* sums, uint8_t* row, ptrdiff_t pixels) noexcept;
void expand_byte_pixels_avx2(const uint8_t* src, uint16_t* row, ptrdiff_t pixels) noexcept;
void expand_byte_pixels_avx512(const uint8_t* src, uint16_t* row, ptrdiff_t pixels) noexcept;
void expand_byte_pixels_neon(const uint8_t* src, uint16_t* row, ptrdiff_t pixels) noexcept;

extern const Variants<SumByteRows> kSumByteRows;
extern const Variants<ReduceBytePixels> kReduceBytePixels;
extern const Variants<ExpandBytePixels> kExpandBytePixels;

}  // namespace biseam
