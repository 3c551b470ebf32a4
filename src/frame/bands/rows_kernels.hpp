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

namespace scalar {
Yuv420RowsToRgb<int32_t> yuv420_rows_to_integer_rgb;
Yuv420RowsToRgb<uint8_t> yuv420_rows_to_byte_rgb;
Yuv422RowToRgb<int32_t> yuv422_row_to_integer_rgb;
Yuv422RowToRgb<uint8_t> yuv422_row_to_byte_rgb;
RgbRowToLuma rgb_row_to_luma;
RgbRowsToChroma420 rgb_rows_to_chroma420;
RgbRowToChroma422 rgb_row_to_chroma422;
}  // namespace scalar

namespace neon {
Yuv420RowsToRgb<int32_t> yuv420_rows_to_integer_rgb;
Yuv420RowsToRgb<uint8_t> yuv420_rows_to_byte_rgb;
Yuv422RowToRgb<int32_t> yuv422_row_to_integer_rgb;
Yuv422RowToRgb<uint8_t> yuv422_row_to_byte_rgb;
RgbRowToLuma rgb_row_to_luma;
RgbRowsToChroma420 rgb_rows_to_chroma420;
RgbRowToChroma422 rgb_row_to_chroma422;
}  // namespace neon

namespace avx2 {
Yuv420RowsToRgb<int32_t> yuv420_rows_to_integer_rgb;
Yuv420RowsToRgb<uint8_t> yuv420_rows_to_byte_rgb;
Yuv422RowToRgb<int32_t> yuv422_row_to_integer_rgb;
Yuv422RowToRgb<uint8_t> yuv422_row_to_byte_rgb;
RgbRowToLuma rgb_row_to_luma;
RgbRowsToChroma420 rgb_rows_to_chroma420;
RgbRowToChroma422 rgb_row_to_chroma422;
}  // namespace avx2

namespace avx512 {
Yuv420RowsToRgb<int32_t> yuv420_rows_to_integer_rgb;
Yuv420RowsToRgb<uint8_t> yuv420_rows_to_byte_rgb;
Yuv422RowToRgb<int32_t> yuv422_row_to_integer_rgb;
Yuv422RowToRgb<uint8_t> yuv422_row_to_byte_rgb;
RgbRowToLuma rgb_row_to_luma;
RgbRowsToChroma420 rgb_rows_to_chroma420;
RgbRowToChroma422 rgb_row_to_chroma422;
}  // namespace avx512

#define BISEAM_ROW_VERSIONS(name) \
  { scalar::name, BISEAM_ON_ARM(neon::name), BISEAM_ON_X86_64(avx2::name), BISEAM_ON_X86_64(avx512::name) }

inline constexpr Variants<Yuv420RowsToRgb<int32_t>> kYuv420RowsToIntegerRgb = BISEAM_ROW_VERSIONS(yuv420_rows_to_integer_rgb);
inline constexpr Variants<Yuv420RowsToRgb<uint8_t>> kYuv420RowsToByteRgb = BISEAM_ROW_VERSIONS(yuv420_rows_to_byte_rgb);
inline constexpr Variants<Yuv422RowToRgb<int32_t>> kYuv422RowToIntegerRgb = BISEAM_ROW_VERSIONS(yuv422_row_to_integer_rgb);
inline constexpr Variants<Yuv422RowToRgb<uint8_t>> kYuv422RowToByteRgb = BISEAM_ROW_VERSIONS(yuv422_row_to_byte_rgb);
inline constexpr Variants<RgbRowToLuma> kRgbRowToLuma = BISEAM_ROW_VERSIONS(rgb_row_to_luma);
inline constexpr Variants<RgbRowsToChroma420> kRgbRowsToChroma420 = BISEAM_ROW_VERSIONS(rgb_rows_to_chroma420);
inline constexpr Variants<RgbRowToChroma422> kRgbRowToChroma422 = BISEAM_ROW_VERSIONS(rgb_row_to_chroma422);

#undef BISEAM_ROW_VERSIONS

}  // namespace biseam
