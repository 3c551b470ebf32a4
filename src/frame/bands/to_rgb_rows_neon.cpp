#include "frame/bands/to_rgb_rows.hpp"

#if defined(BISEAM_ARM)

#include "base/intrinsics.hpp"
#include "frame/bands/integer_formulas.hpp"

namespace biseam {

namespace {

constexpr int kPairs = 8;  // a block

// What the chroma of eight pairs adds to luma.
struct Offsets {
  int16x8_t red, green, blue;
};

BISEAM_NEON inline int16x4_t quotients_of(int32x4_t ten_thousandths) noexcept {
  const int32x4_t biased = vaddq_s32(ten_thousandths, vdupq_n_s32(kOffsetRounding));
  return vshrn_n_s32(vqdmulhq_n_s32(biased, kDecimalReciprocal), kOffsetShift);
}

BISEAM_NEON inline int16x8_t offsets_of(int32x4_t low, int32x4_t high) noexcept {
  return vsubq_s16(vcombine_s16(quotients_of(low), quotients_of(high)), vdupq_n_s16(kOffsetBias));
}

BISEAM_NEON inline int16x8_t offsets_of(int16x8_t c, int16_t factor) noexcept {
  return offsets_of(vmull_n_s16(vget_low_s16(c), factor), vmull_n_s16(vget_high_s16(c), factor));
}

BISEAM_NEON inline int16x8_t green_offsets(int16x8_t u, int16x8_t v) noexcept {
  return offsets_of(vmlal_n_s16(vmull_n_s16(vget_low_s16(u), kGreenOfU), vget_low_s16(v), kGreenOfV),
                    vmlal_n_s16(vmull_n_s16(vget_high_s16(u), kGreenOfU), vget_high_s16(v), kGreenOfV));
}

BISEAM_NEON inline Offsets load_offsets(const uint8_t* chroma) noexcept {
  const uint8x8x2_t pairs = vld2_u8(chroma);
  const int16x8_t u = vreinterpretq_s16_u16(vsubl_u8(pairs.val[0], vdup_n_u8(128)));
  const int16x8_t v = vreinterpretq_s16_u16(vsubl_u8(pairs.val[1], vdup_n_u8(128)));
  return {offsets_of(v, kRedOfV), green_offsets(u, v), offsets_of(u, kBlueOfU)};
}

// A channel of the sixteen pixels of eight pairs.
BISEAM_NEON inline uint8x8x2_t channel(int16x8_t even_luma, int16x8_t odd_luma, int16x8_t offsets) noexcept {
  return vzip_u8(vqmovun_s16(vaddq_s16(even_luma, offsets)), vqmovun_s16(vaddq_s16(odd_luma, offsets)));
}

BISEAM_NEON inline void store_eight(uint8_t* rgb, uint8x8_t red, uint8x8_t green, uint8x8_t blue) noexcept {
  vst3_u8(rgb, (uint8x8x3_t{{red, green, blue}}));
}

BISEAM_NEON inline void convert_row(const uint8_t* luma, const Offsets& offsets, uint8_t* rgb) noexcept {
  const uint8x8x2_t bytes = vld2_u8(luma);
  const int16x8_t even = vreinterpretq_s16_u16(vmovl_u8(bytes.val[0]));
  const int16x8_t odd = vreinterpretq_s16_u16(vmovl_u8(bytes.val[1]));
  const uint8x8x2_t red = channel(even, odd, offsets.red);
  const uint8x8x2_t green = channel(even, odd, offsets.green);
  const uint8x8x2_t blue = channel(even, odd, offsets.blue);
  store_eight(rgb, red.val[0], green.val[0], blue.val[0]);
  store_eight(rgb + 24, red.val[1], green.val[1], blue.val[1]);
}

}  // namespace

BISEAM_NEON void yuv420_rows_to_rgb_neon(const uint8_t* luma0, const uint8_t* luma1, const uint8_t* chroma, uint8_t* rgb0,
                                         uint8_t* rgb1, int pairs) noexcept {
  if (pairs < kPairs) return yuv420_rows_to_rgb_scalar(luma0, luma1, chroma, rgb0, rgb1, pairs);
  // The last block goes back to where it is whole.
  for (int next = 0; next < pairs; next += kPairs) {
    const int i = next + kPairs <= pairs ? next : pairs - kPairs;
    const Offsets offsets = load_offsets(chroma + 2 * i);
    convert_row(luma0 + 2 * i, offsets, rgb0 + 6 * i);
    convert_row(luma1 + 2 * i, offsets, rgb1 + 6 * i);
  }
}

BISEAM_NEON void yuv422_row_to_rgb_neon(const uint8_t* luma, const uint8_t* chroma, uint8_t* rgb, int pairs) noexcept {
  if (pairs < kPairs) return yuv422_row_to_rgb_scalar(luma, chroma, rgb, pairs);
  for (int next = 0; next < pairs; next += kPairs) {
    const int i = next + kPairs <= pairs ? next : pairs - kPairs;
    convert_row(luma + 2 * i, load_offsets(chroma + 2 * i), rgb + 6 * i);
  }
}

}  // namespace biseam

#endif
