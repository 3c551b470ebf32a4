#pragma once

#include <cstdint>

#include "base/variants.hpp"

// The versions behind rows.hpp.  All but the scalar ones are for rows that are apart from each other.
namespace biseam {

template <class Sample>
using Yuv420RowsToRgb = void(const uint8_t* luma0, const uint8_t* luma1, const uint8_t* chroma, Sample* rgb0, Sample* rgb1,
                             int pairs) noexcept;
template <class Sample>
using Yuv422RowToRgb = void(const uint8_t* luma, const uint8_t* chroma, Sample* rgb, int pairs) noexcept;
using RgbRowToLuma = void(const int32_t* rgb, uint8_t* luma, int count) noexcept;
using RgbRowsToChroma420 = void(const int32_t* rgb0, const int32_t* rgb1, uint8_t* chroma, int pairs) noexcept;
using RgbRowToChroma422 = void(const int32_t* rgb, uint8_t* chroma, int pairs) noexcept;

Yuv420RowsToRgb<int32_t> yuv420_rows_to_integer_rgb_scalar, yuv420_rows_to_integer_rgb_neon, yuv420_rows_to_integer_rgb_avx2,
    yuv420_rows_to_integer_rgb_avx512;
Yuv420RowsToRgb<uint8_t> yuv420_rows_to_byte_rgb_scalar, yuv420_rows_to_byte_rgb_neon, yuv420_rows_to_byte_rgb_avx2,
    yuv420_rows_to_byte_rgb_avx512;
Yuv422RowToRgb<int32_t> yuv422_row_to_integer_rgb_scalar, yuv422_row_to_integer_rgb_neon, yuv422_row_to_integer_rgb_avx2,
    yuv422_row_to_integer_rgb_avx512;
Yuv422RowToRgb<uint8_t> yuv422_row_to_byte_rgb_scalar, yuv422_row_to_byte_rgb_neon, yuv422_row_to_byte_rgb_avx2,
    yuv422_row_to_byte_rgb_avx512;
RgbRowToLuma rgb_row_to_luma_scalar, rgb_row_to_luma_neon, rgb_row_to_luma_avx2, rgb_row_to_luma_avx512;
RgbRowsToChroma420 rgb_rows_to_chroma420_scalar, rgb_rows_to_chroma420_neon, rgb_rows_to_chroma420_avx2,
    rgb_rows_to_chroma420_avx512;
RgbRowToChroma422 rgb_row_to_chroma422_scalar, rgb_row_to_chroma422_neon, rgb_row_to_chroma422_avx2,
    rgb_row_to_chroma422_avx512;

inline constexpr Variants<Yuv420RowsToRgb<int32_t>> kYuv420RowsToIntegerRgb{
    yuv420_rows_to_integer_rgb_scalar, BISEAM_ON_ARM(yuv420_rows_to_integer_rgb_neon),
    BISEAM_ON_X86_64(yuv420_rows_to_integer_rgb_avx2), BISEAM_ON_X86_64(yuv420_rows_to_integer_rgb_avx512)};
inline constexpr Variants<Yuv420RowsToRgb<uint8_t>> kYuv420RowsToByteRgb{
    yuv420_rows_to_byte_rgb_scalar, BISEAM_ON_ARM(yuv420_rows_to_byte_rgb_neon), BISEAM_ON_X86_64(yuv420_rows_to_byte_rgb_avx2),
    BISEAM_ON_X86_64(yuv420_rows_to_byte_rgb_avx512)};
inline constexpr Variants<Yuv422RowToRgb<int32_t>> kYuv422RowToIntegerRgb{
    yuv422_row_to_integer_rgb_scalar, BISEAM_ON_ARM(yuv422_row_to_integer_rgb_neon),
    BISEAM_ON_X86_64(yuv422_row_to_integer_rgb_avx2), BISEAM_ON_X86_64(yuv422_row_to_integer_rgb_avx512)};
inline constexpr Variants<Yuv422RowToRgb<uint8_t>> kYuv422RowToByteRgb{
    yuv422_row_to_byte_rgb_scalar, BISEAM_ON_ARM(yuv422_row_to_byte_rgb_neon), BISEAM_ON_X86_64(yuv422_row_to_byte_rgb_avx2),
    BISEAM_ON_X86_64(yuv422_row_to_byte_rgb_avx512)};
inline constexpr Variants<RgbRowToLuma> kRgbRowToLuma{rgb_row_to_luma_scalar, BISEAM_ON_ARM(rgb_row_to_luma_neon),
                                                      BISEAM_ON_X86_64(rgb_row_to_luma_avx2),
                                                      BISEAM_ON_X86_64(rgb_row_to_luma_avx512)};
inline constexpr Variants<RgbRowsToChroma420> kRgbRowsToChroma420{
    rgb_rows_to_chroma420_scalar, BISEAM_ON_ARM(rgb_rows_to_chroma420_neon), BISEAM_ON_X86_64(rgb_rows_to_chroma420_avx2),
    BISEAM_ON_X86_64(rgb_rows_to_chroma420_avx512)};
inline constexpr Variants<RgbRowToChroma422> kRgbRowToChroma422{
    rgb_row_to_chroma422_scalar, BISEAM_ON_ARM(rgb_row_to_chroma422_neon), BISEAM_ON_X86_64(rgb_row_to_chroma422_avx2),
    BISEAM_ON_X86_64(rgb_row_to_chroma422_avx512)};

}  // namespace biseam
