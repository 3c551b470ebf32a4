#pragma once

#include <cstdint>

#include "base/variants.hpp"

// YUV to RGB bytes, row by row.  Chroma is interleaved, U first; RGB is interleaved, R first.  A pair is two neighbouring
// pixels that share their chroma.  Rows that are written are apart from all others.
namespace biseam {

// Two rows of pixels over one row of chroma.
using Yuv420RowsToRgb = void(const uint8_t* luma0, const uint8_t* luma1, const uint8_t* chroma, uint8_t* rgb0, uint8_t* rgb1,
                             int pairs) noexcept;
Yuv420RowsToRgb yuv420_rows_to_rgb_scalar, yuv420_rows_to_rgb_neon, yuv420_rows_to_rgb_avx2, yuv420_rows_to_rgb_avx512;

using Yuv422RowToRgb = void(const uint8_t* luma, const uint8_t* chroma, uint8_t* rgb, int pairs) noexcept;
Yuv422RowToRgb yuv422_row_to_rgb_scalar, yuv422_row_to_rgb_neon, yuv422_row_to_rgb_avx2, yuv422_row_to_rgb_avx512;

extern const Variants<Yuv420RowsToRgb> kYuv420RowsToRgb;
extern const Variants<Yuv422RowToRgb> kYuv422RowToRgb;

}  // namespace biseam
