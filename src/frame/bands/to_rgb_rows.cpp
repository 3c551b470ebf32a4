#include "frame/bands/to_rgb_rows.hpp"

#include "stages/format/colour.hpp"

namespace biseam {

void yuv420_rows_to_rgb_scalar(const uint8_t* luma0, const uint8_t* luma1, const uint8_t* chroma, uint8_t* rgb0, uint8_t* rgb1,
                               int pairs) noexcept {
  for (int i = 0; i < pairs; ++i) {
    const ChromaTerms terms = terms_of(chroma[2 * i], chroma[2 * i + 1]);
    for (int x = 2 * i; x < 2 * i + 2; ++x) {
      store_pixel(luma0[x], terms, rgb0 + 3 * x);
      store_pixel(luma1[x], terms, rgb1 + 3 * x);
    }
  }
}

void yuv422_row_to_rgb_scalar(const uint8_t* luma, const uint8_t* chroma, uint8_t* rgb, int pairs) noexcept {
  for (int i = 0; i < pairs; ++i) {
    const ChromaTerms terms = terms_of(chroma[2 * i], chroma[2 * i + 1]);
    for (int x = 2 * i; x < 2 * i + 2; ++x) store_pixel(luma[x], terms, rgb + 3 * x);
  }
}

constinit const Variants<Yuv420RowsToRgb> kYuv420RowsToRgb{yuv420_rows_to_rgb_scalar, BISEAM_ON_ARM(yuv420_rows_to_rgb_neon),
                                                           BISEAM_ON_X86_64(yuv420_rows_to_rgb_avx2),
                                                           BISEAM_ON_X86_64(yuv420_rows_to_rgb_avx512)};
constinit const Variants<Yuv422RowToRgb> kYuv422RowToRgb{yuv422_row_to_rgb_scalar, BISEAM_ON_ARM(yuv422_row_to_rgb_neon),
                                                         BISEAM_ON_X86_64(yuv422_row_to_rgb_avx2),
                                                         BISEAM_ON_X86_64(yuv422_row_to_rgb_avx512)};

}  // namespace biseam
