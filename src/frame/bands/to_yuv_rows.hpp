#pragma once

#include <cstdint>

#include "base/variants.hpp"

// Integer RGB with 6 fractional bits to YUV, row by row.  RGB is interleaved, R first; chroma is interleaved, U first.  A pair
// is two neighbouring pixels that share their chroma.  Rows that are written are apart from all others.  The vector versions
// divide integers; blocks with a sample or sum that does not fit 16 bits without its fractional bits go to the scalar one.
namespace biseam {

using RgbRowToLuma = void(const int32_t* rgb, uint8_t* luma, int count) noexcept;
RgbRowToLuma rgb_row_to_luma_scalar, rgb_row_to_luma_neon, rgb_row_to_luma_avx2, rgb_row_to_luma_avx512;

// The raw samples of a block are summed (wrapping) before the fractional bits are dropped: once per block.
using RgbRowsToChroma420 = void(const int32_t* rgb0, const int32_t* rgb1, uint8_t* chroma, int pairs) noexcept;
RgbRowsToChroma420 rgb_rows_to_chroma420_scalar, rgb_rows_to_chroma420_neon, rgb_rows_to_chroma420_avx2,
    rgb_rows_to_chroma420_avx512;

using RgbRowToChroma422 = void(const int32_t* rgb, uint8_t* chroma, int pairs) noexcept;
RgbRowToChroma422 rgb_row_to_chroma422_scalar, rgb_row_to_chroma422_neon, rgb_row_to_chroma422_avx2,
    rgb_row_to_chroma422_avx512;

extern const Variants<RgbRowToLuma> kRgbRowToLuma;
extern const Variants<RgbRowsToChroma420> kRgbRowsToChroma420;
extern const Variants<RgbRowToChroma422> kRgbRowToChroma422;

}  // namespace biseam
