#include "frame/bands/to_yuv_rows.hpp"

#include "stages/format/colour.hpp"

namespace biseam {

namespace {

void store_pair(const ChromaPair& pair, uint8_t* chroma) noexcept {
  chroma[0] = pair.u;
  chroma[1] = pair.v;
}

}  // namespace

void rgb_row_to_luma_scalar(const int32_t* rgb, uint8_t* luma, int count) noexcept {
  for (int i = 0; i < count; ++i) luma[i] = luma_of(rgb + 3 * i);
}

void rgb_rows_to_chroma420_scalar(const int32_t* rgb0, const int32_t* rgb1, uint8_t* chroma, int pairs) noexcept {
  for (int i = 0; i < pairs; ++i, rgb0 += 6, rgb1 += 6) {
    store_pair(chroma420_of(rgb0, rgb0 + 3, rgb1, rgb1 + 3), chroma + 2 * i);
  }
}

void rgb_row_to_chroma422_scalar(const int32_t* rgb, uint8_t* chroma, int pairs) noexcept {
  for (int i = 0; i < pairs; ++i, rgb += 6) store_pair(chroma422_of(rgb, rgb + 3), chroma + 2 * i);
}

constinit const Variants<RgbRowToLuma> kRgbRowToLuma{rgb_row_to_luma_scalar, BISEAM_ON_ARM(rgb_row_to_luma_neon),
                                                     BISEAM_ON_X86_64(rgb_row_to_luma_avx2),
                                                     BISEAM_ON_X86_64(rgb_row_to_luma_avx512)};
constinit const Variants<RgbRowsToChroma420> kRgbRowsToChroma420{
    rgb_rows_to_chroma420_scalar, BISEAM_ON_ARM(rgb_rows_to_chroma420_neon), BISEAM_ON_X86_64(rgb_rows_to_chroma420_avx2),
    BISEAM_ON_X86_64(rgb_rows_to_chroma420_avx512)};
constinit const Variants<RgbRowToChroma422> kRgbRowToChroma422{
    rgb_row_to_chroma422_scalar, BISEAM_ON_ARM(rgb_row_to_chroma422_neon), BISEAM_ON_X86_64(rgb_row_to_chroma422_avx2),
    BISEAM_ON_X86_64(rgb_row_to_chroma422_avx512)};

}  // namespace biseam
