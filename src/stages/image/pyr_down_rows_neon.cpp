#include "base/isa.hpp"

#if defined(BISEAM_ARM)

#include <arm_neon.h>

#include "stages/image/pyr_down_kernels.hpp"

namespace biseam {

namespace {

// A pixel in three lanes; the fourth is the sample that follows.
BISEAM_NEON inline uint32x4_t load_pixel(const int32_t* src) { return vreinterpretq_u32_s32(vld1q_s32(src)); }

// One pixel at a time; every source pixel is loaded once.
template <bool rounded>
BISEAM_NEON inline ptrdiff_t reduce_each(const int32_t* src, int32_t* row, ptrdiff_t pixels) {
  if (pixels < 2) return 0;
  uint32x4_t before = load_pixel(src - 6), odd_before = load_pixel(src - 3), even = load_pixel(src);
  ptrdiff_t x = 0;
  // The last pixel is left out: the sample that follows its neighbours is not to be read.
  for (; x + 2 <= pixels; ++x) {
    const uint32x4_t odd = load_pixel(src + 6 * x + 3), after = load_pixel(src + 6 * x + 6);
    const uint32x4_t by_four = vaddq_u32(vaddq_u32(odd_before, odd), even);
    const uint32x4_t outer = vaddq_u32(vaddq_u32(before, after), vshlq_n_u32(even, 1));
    const int32x4_t sum = vreinterpretq_s32_u32(vaddq_u32(outer, vshlq_n_u32(by_four, 2)));
    // The fourth lane is replaced by the next store.
    vst1q_s32(row + 3 * x, rounded ? vshrq_n_s32(vaddq_s32(sum, vdupq_n_s32(128)), 8) : sum);
    before = even;
    odd_before = odd;
    even = after;
  }
  return x;
}

}  // namespace

BISEAM_NEON void reduce_pixels_neon(const int32_t* src, int32_t* row, ptrdiff_t pixels) noexcept {
  const ptrdiff_t done = reduce_each<false>(src, row, pixels);
  kReducePixels.scalar(src + 6 * done, row + 3 * done, pixels - done);
}

BISEAM_NEON void reduce_pixels_rounded_neon(const int32_t* src, int32_t* row, ptrdiff_t pixels) noexcept {
  const ptrdiff_t done = reduce_each<true>(src, row, pixels);
  kReducePixelsRounded.scalar(src + 6 * done, row + 3 * done, pixels - done);
}

}  // namespace biseam

#endif
