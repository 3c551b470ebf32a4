#include "frame/blend/expand_row.hpp"

#if defined(BISEAM_ARM)

#include "base/intrinsics.hpp"

namespace biseam {

namespace {

// A pixel in three lanes; the fourth is the sample that follows.
BISEAM_NEON inline uint32x4_t load_pixel(const int32_t* src) { return vreinterpretq_u32_s32(vld1q_s32(src)); }

}  // namespace

BISEAM_NEON void expand_pixels_neon(const int32_t* src, int32_t* row, ptrdiff_t pixels) noexcept {
  ptrdiff_t i = 0;
  if (pixels >= 2) {
    uint32x4_t before = load_pixel(src - 3), middle = load_pixel(src);
    // The last pixel is left out: the sample that follows its neighbours is not to be read.
    for (; i + 2 <= pixels; ++i) {
      const uint32x4_t after = load_pixel(src + 3 * i + 3);
      const uint32x4_t between = vshlq_n_u32(vaddq_u32(middle, after), 2);
      const uint32x4_t four = vaddq_u32(vaddq_u32(before, after), vshlq_n_u32(middle, 2));
      const uint32x4_t on = vaddq_u32(four, vshlq_n_u32(middle, 1));
      // Fourth lanes are replaced by the next store.
      vst1q_s32(row + 6 * i, vreinterpretq_s32_u32(on));
      vst1q_s32(row + 6 * i + 3, vreinterpretq_s32_u32(between));
      before = middle;
      middle = after;
    }
  }
  expand_pixels_scalar(src + 3 * i, row + 6 * i, pixels - i);
}

}  // namespace biseam

#endif
