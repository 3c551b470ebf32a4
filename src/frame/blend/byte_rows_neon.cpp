#include "frame/blend/byte_rows.hpp"

#if defined(BISEAM_ARM)

#include "base/intrinsics.hpp"

namespace biseam {

namespace {

constexpr ptrdiff_t kPixels = 8;  // at a time, the channels apart

struct Channels {
  uint16x8_t even[3], odd[3];
};

// Sixteen pixels.
BISEAM_NEON inline Channels load_apart(const uint16_t* sums) {
  const uint16x8x3_t first = vld3q_u16(sums), last = vld3q_u16(sums + 24);
  Channels channels;
  for (int k = 0; k < 3; ++k) {
    const uint16x8x2_t apart = vuzpq_u16(first.val[k], last.val[k]);
    channels.even[k] = apart.val[0];
    channels.odd[k] = apart.val[1];
  }
  return channels;
}

BISEAM_NEON inline void reduce_block(const uint16_t* sums, uint8_t* row) {
  const Channels before = load_apart(sums - 6), here = load_apart(sums);
  uint16x8x3_t after;
  for (int k = 0; k < 3; ++k) after.val[k] = vextq_u16(here.even[k], here.even[k], 1);
  after = vld3q_lane_u16(sums + 48, after, 7);
  uint8x8x3_t reduced;
  for (int k = 0; k < 3; ++k) {
    const uint16x8_t outer = vaddq_u16(before.even[k], after.val[k]);
    const uint16x8_t by_four = vaddq_u16(vaddq_u16(before.odd[k], here.odd[k]), here.even[k]);
    const uint16x8_t by_two = vaddq_u16(here.even[k], vdupq_n_u16(64));  // and half a unit of the result
    const uint16x8_t sum = vaddq_u16(vaddq_u16(outer, vshlq_n_u16(by_two, 1)), vshlq_n_u16(by_four, 2));
    reduced.val[k] = vshrn_n_u16(sum, 8);
  }
  vst3_u8(row, reduced);
}

BISEAM_NEON inline void expand_block(const uint8_t* src, uint16_t* row) {
  const uint8x8x3_t before = vld3_u8(src - 3), middle = vld3_u8(src), after = vld3_u8(src + 3);
  uint16x8x3_t first, last;
  for (int k = 0; k < 3; ++k) {
    const uint16x8_t on = vmlal_u8(vaddl_u8(before.val[k], after.val[k]), middle.val[k], vdup_n_u8(6));
    const uint16x8_t between = vshlq_n_u16(vaddl_u8(middle.val[k], after.val[k]), 2);
    const uint16x8x2_t turns = vzipq_u16(on, between);
    first.val[k] = turns.val[0];
    last.val[k] = turns.val[1];
  }
  vst3q_u16(row, first);
  vst3q_u16(row + 24, last);
}

}  // namespace

BISEAM_NEON void reduce_byte_pixels_neon(const uint16_t* sums, uint8_t* row, ptrdiff_t pixels) noexcept {
  if (pixels < kPixels) return reduce_byte_pixels_scalar(sums, row, pixels);
  // The last block goes back to where it is whole.
  for (ptrdiff_t next = 0; next < pixels; next += kPixels) {
    const ptrdiff_t x = next + kPixels <= pixels ? next : pixels - kPixels;
    reduce_block(sums + 6 * x, row + 3 * x);
  }
}

BISEAM_NEON void expand_byte_pixels_neon(const uint8_t* src, uint16_t* row, ptrdiff_t pixels) noexcept {
  if (pixels < kPixels) return expand_byte_pixels_scalar(src, row, pixels);
  for (ptrdiff_t next = 0; next < pixels; next += kPixels) {
    const ptrdiff_t i = next + kPixels <= pixels ? next : pixels - kPixels;
    expand_block(src + 3 * i, row + 6 * i);
  }
}

}  // namespace biseam

#endif
