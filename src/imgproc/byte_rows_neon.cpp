#include "cpu/isa.hpp"

#if defined(BISEAM_ARM)

#include <arm_neon.h>

#include "imgproc/byte_kernels.hpp"

namespace biseam {

namespace {

// A pixel and five samples more.
BISEAM_NEON inline uint16x8_t load_pixels(const uint8_t* src) { return vmovl_u8(vld1_u8(src)); }

}  // namespace

// One pixel at a time, and a stray in the fourth lane.
BISEAM_NEON void reduce_byte_pixels_neon(const uint16_t* sums, uint8_t* row, ptrdiff_t pixels) noexcept {
  ptrdiff_t x = 0;
  // Eight bytes are stored: three of a pixel, the others replaced by the pixels that follow.
  for (; x + 3 <= pixels; ++x) {
    const uint16_t* s = sums + 6 * x;
    const uint16x4_t outer = vadd_u16(vld1_u16(s - 6), vld1_u16(s + 6));
    const uint16x4_t inner = vadd_u16(vld1_u16(s - 3), vld1_u16(s + 3));
    const uint16x4_t middle = vld1_u16(s);
    const uint16x4_t sum = vadd_u16(vadd_u16(outer, vshl_n_u16(middle, 1)), vshl_n_u16(vadd_u16(inner, middle), 2));
    const uint16x4_t rounded = vadd_u16(sum, vdup_n_u16(128));
    vst1_u8(row + 3 * x, vshrn_n_u16(vcombine_u16(rounded, rounded), 8));
  }
  kReduceBytePixels.scalar(sums + 6 * x, row + 3 * x, pixels - x);
}

// Two pixels at a time, and two strays behind them.
BISEAM_NEON void expand_byte_pixels_neon(const uint8_t* src, uint16_t* row, ptrdiff_t pixels) noexcept {
  ptrdiff_t i = 0;
  for (; i + 3 <= pixels; i += 2) {
    const uint8_t* s = src + 3 * i;
    uint16_t* out = row + 6 * i;
    const uint16x8_t before = load_pixels(s - 3), middle = load_pixels(s), after = load_pixels(s + 3);
    const uint16x8_t between = vshlq_n_u16(vaddq_u16(middle, after), 2);
    const uint16x8_t by_two = vaddq_u16(middle, middle);
    const uint16x8_t on = vaddq_u16(vaddq_u16(before, after), vaddq_u16(by_two, vshlq_n_u16(by_two, 1)));
    // Fourth lanes are replaced by the next store.
    vst1_u16(out, vget_low_u16(on));
    vst1_u16(out + 3, vget_low_u16(between));
    vst1_u16(out + 6, vget_low_u16(vextq_u16(on, on, 3)));
    vst1_u16(out + 9, vget_low_u16(vextq_u16(between, between, 3)));
  }
  kExpandBytePixels.scalar(src + 3 * i, row + 6 * i, pixels - i);
}

}  // namespace biseam

#endif
