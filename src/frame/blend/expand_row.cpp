#include "frame/blend/expand_row.hpp"

#include "stages/image/row_expansion.hpp"

namespace biseam {

void expand_pixels_scalar(const int32_t* src, int32_t* row, ptrdiff_t pixels) noexcept {
  for (ptrdiff_t i = 0; i < pixels; ++i) expand_pixel(src + 3 * i - 3, src + 3 * i, src + 3 * i + 3, row + 6 * i, 3);
}

constinit const Variants<ExpandPixels> kExpandPixels{expand_pixels_scalar, BISEAM_ON_ARM(expand_pixels_neon),
                                                     BISEAM_ON_X86_64(expand_pixels_avx2),
                                                     BISEAM_ON_X86_64(expand_pixels_avx512)};

void expand_row(const int32_t* src, int32_t* row, ptrdiff_t width) noexcept {
  if (width < 1) return;
  expand_outer_pixels(src, row, width, 3);
  kExpandPixels.best()(src + 3, row + 6, width - 2);
}

}  // namespace biseam
