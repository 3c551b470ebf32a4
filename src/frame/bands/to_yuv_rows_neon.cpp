#include "frame/bands/to_yuv_rows.hpp"

#if defined(BISEAM_ARM)

#include "base/intrinsics.hpp"
#include "frame/bands/integer_formulas.hpp"

namespace biseam {

namespace {

constexpr int kPixels = 8;  // a block of luma
constexpr int kPairs = 8;   // a block of chroma

BISEAM_NEON inline uint32x4_t excess(int32x4_t samples) noexcept {
  return vandq_u32(vreinterpretq_u32_s32(vaddq_s32(samples, vdupq_n_s32(kWholeLimit))), vdupq_n_u32(~(2u * kWholeLimit - 1u)));
}

// Whether any sample does not fit 16 bits without its fractional bits.
BISEAM_NEON inline bool any_excess(const int32x4x3_t& a, const int32x4x3_t& b) noexcept {
  const uint32x4_t red = vorrq_u32(excess(a.val[0]), excess(b.val[0]));
  const uint32x4_t green = vorrq_u32(excess(a.val[1]), excess(b.val[1]));
  const uint32x4_t blue = vorrq_u32(excess(a.val[2]), excess(b.val[2]));
  const uint32x4_t all = vorrq_u32(vorrq_u32(red, green), blue);
  return vget_lane_u64(vreinterpret_u64_u32(vorr_u32(vget_low_u32(all), vget_high_u32(all))), 0) != 0;
}

// rounding + red r + green g + blue b, of samples that fit.
BISEAM_NEON inline int32x4_t dot(const int32x4x3_t& rgb, int16_t red, int16_t green, int16_t blue, int32_t rounding) noexcept {
  int32x4_t sum = vdupq_n_s32(rounding);
  sum = vmlal_n_s16(sum, vshrn_n_s32(rgb.val[0], kFractionBits), red);
  sum = vmlal_n_s16(sum, vshrn_n_s32(rgb.val[1], kFractionBits), green);
  return vmlal_n_s16(sum, vshrn_n_s32(rgb.val[2], kFractionBits), blue);
}

BISEAM_NEON inline uint16x4_t luma_of(const int32x4x3_t& rgb) noexcept {
  const int32x4_t sum = dot(rgb, kLumaOfRed, kLumaOfGreen, kLumaOfBlue, kLumaRounding);
  return vqshrun_n_s32(vqdmulhq_n_s32(sum, kLumaWideReciprocal), kLumaWideShift);
}

BISEAM_NEON inline uint16x4_t chroma_of(int32x4_t sum) noexcept {
  return vqshrun_n_s32(vqdmulhq_n_s32(sum, kDecimalReciprocal), kChromaShift);
}

template <int weight>
BISEAM_NEON inline uint16x4_t u_of(const int32x4x3_t& sums) noexcept {
  return chroma_of(dot(sums, weight * kUOfRed, weight * kUOfGreen, weight * kUOfBlue, kChromaRounding));
}

template <int weight>
BISEAM_NEON inline uint16x4_t v_of(const int32x4x3_t& sums) noexcept {
  return chroma_of(dot(sums, weight * kVOfRed, weight * kVOfGreen, weight * kVOfBlue, kChromaRounding));
}

BISEAM_NEON inline int32x4_t add_neighbours(int32x4_t a, int32x4_t b) noexcept {
  return vcombine_s32(vpadd_s32(vget_low_s32(a), vget_high_s32(a)), vpadd_s32(vget_low_s32(b), vget_high_s32(b)));
}

BISEAM_NEON inline int32x4x3_t pair_sums(const int32x4x3_t& a, const int32x4x3_t& b) noexcept {
  return {{add_neighbours(a.val[0], b.val[0]), add_neighbours(a.val[1], b.val[1]), add_neighbours(a.val[2], b.val[2])}};
}

BISEAM_NEON inline int32x4x3_t load_sum(const int32_t* rgb0, const int32_t* rgb1) noexcept {
  const int32x4x3_t a = vld3q_s32(rgb0), b = vld3q_s32(rgb1);
  return {{vaddq_s32(a.val[0], b.val[0]), vaddq_s32(a.val[1], b.val[1]), vaddq_s32(a.val[2], b.val[2])}};
}

// The sums of four pairs.
BISEAM_NEON inline int32x4x3_t sums_of_four(const int32_t* rgb0, const int32_t* rgb1) noexcept {
  return pair_sums(load_sum(rgb0, rgb1), load_sum(rgb0 + 12, rgb1 + 12));
}

BISEAM_NEON inline int32x4x3_t sums_of_two(const int32_t* rgb) noexcept {
  return pair_sums(vld3q_s32(rgb), vld3q_s32(rgb + 12));
}

// From the sums of two times four pairs.  False, and nothing is written, where they are too large.
template <int weight>
BISEAM_NEON inline bool chroma_block(const int32x4x3_t& a, const int32x4x3_t& b, uint8_t* chroma) noexcept {
  if (any_excess(a, b)) return false;
  const uint8x8_t u = vqmovn_u16(vcombine_u16(u_of<weight>(a), u_of<weight>(b)));
  const uint8x8_t v = vqmovn_u16(vcombine_u16(v_of<weight>(a), v_of<weight>(b)));
  vst2_u8(chroma, (uint8x8x2_t{{u, v}}));
  return true;
}

BISEAM_NEON inline void luma_block(const int32_t* rgb, uint8_t* luma) noexcept {
  const int32x4x3_t a = vld3q_s32(rgb), b = vld3q_s32(rgb + 12);
  if (any_excess(a, b)) return rgb_row_to_luma_scalar(rgb, luma, kPixels);
  vst1_u8(luma, vqmovn_u16(vcombine_u16(luma_of(a), luma_of(b))));
}

}  // namespace

BISEAM_NEON void rgb_row_to_luma_neon(const int32_t* rgb, uint8_t* luma, int count) noexcept {
  if (count < kPixels) return rgb_row_to_luma_scalar(rgb, luma, count);
  // The last block goes back to where it is whole.
  for (int next = 0; next < count; next += kPixels) {
    const int i = next + kPixels <= count ? next : count - kPixels;
    luma_block(rgb + 3 * i, luma + i);
  }
}

BISEAM_NEON void rgb_rows_to_chroma420_neon(const int32_t* rgb0, const int32_t* rgb1, uint8_t* chroma, int pairs) noexcept {
  if (pairs < kPairs) return rgb_rows_to_chroma420_scalar(rgb0, rgb1, chroma, pairs);
  for (int next = 0; next < pairs; next += kPairs) {
    const int i = next + kPairs <= pairs ? next : pairs - kPairs;
    const int32_t *p0 = rgb0 + 6 * i, *p1 = rgb1 + 6 * i;
    uint8_t* out = chroma + 2 * i;
    if (!chroma_block<1>(sums_of_four(p0, p1), sums_of_four(p0 + 24, p1 + 24), out)) {
      rgb_rows_to_chroma420_scalar(p0, p1, out, kPairs);
    }
  }
}

BISEAM_NEON void rgb_row_to_chroma422_neon(const int32_t* rgb, uint8_t* chroma, int pairs) noexcept {
  if (pairs < kPairs) return rgb_row_to_chroma422_scalar(rgb, chroma, pairs);
  for (int next = 0; next < pairs; next += kPairs) {
    const int i = next + kPairs <= pairs ? next : pairs - kPairs;
    const int32_t* p = rgb + 6 * i;
    uint8_t* out = chroma + 2 * i;
    if (!chroma_block<2>(sums_of_two(p), sums_of_two(p + 24), out)) rgb_row_to_chroma422_scalar(p, out, kPairs);
  }
}

}  // namespace biseam

#endif
