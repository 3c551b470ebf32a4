#include "frame/remap/sample_row.hpp"

#if defined(BISEAM_ARM)

#include <cstring>

#include "base/intrinsics.hpp"
#include "stages/lens/sample.hpp"

namespace biseam {

namespace {

constexpr int kLuma = 8, kChroma = 4;  // samples of one step

// Four positions split into the samples that are read and the fractions beyond.
struct Split {
  uint32x4_t column, row;
  float32x4_t fx, fy;
};

struct Weights {
  float32x4_t w00, w10, w01, w11;
};

// The conversions truncate, saturate and give 0 for NaN.
BISEAM_NEON inline Split split(float32x4_t u, float32x4_t v) {
  const uint32x4_t column = vcvtq_u32_f32(u), row = vcvtq_u32_f32(v);
  return {column, row, vsubq_f32(u, vcvtq_f32_u32(column)), vsubq_f32(v, vcvtq_f32_u32(row))};
}

BISEAM_NEON inline Split split_luma(const float* entries) {
  const float32x4x2_t uv = vld2q_f32(entries);
  return split(uv.val[0], uv.val[1]);
}

// Also loads, and leaves, the entries between.
BISEAM_NEON inline Split split_chroma(const float* entries, float y_scale) {
  const float32x4x4_t uv = vld4q_f32(entries);
  return split(vmulq_n_f32(uv.val[0], 0.5f), vmulq_n_f32(uv.val[1], y_scale));
}

// 32-bit units flush denormals.  With fractions of at most 2^16 no result byte depends on it: what is flushed is below 2^-126,
// so a product of fractions is off by less than 2^-110.  1 - fy is at least 2^-24 and takes up such differences.  Any other sum
// either takes them up, being 2^26 times larger, or stays below 2^-20 and truncates to 0 either way.
BISEAM_NEON inline bool same_with_flushing(const Split& at) {
#if defined(__aarch64__)
  (void)at;
  return true;
#else
  const float32x4_t limit = vdupq_n_f32(65536.0f);
  const uint16x4_t small = vmovn_u32(vandq_u32(vcageq_f32(limit, at.fx), vcageq_f32(limit, at.fy)));
  return vget_lane_u64(vreinterpret_u64_u16(small), 0) == ~uint64_t{0};
#endif
}

BISEAM_NEON inline Weights weigh(const Split& at) {
  const float32x4_t w11 = vmulq_f32(at.fx, at.fy), w10 = vsubq_f32(at.fx, w11);
  return {vsubq_f32(vsubq_f32(vdupq_n_f32(1.0f), at.fy), w10), w10, vsubq_f32(at.fy, w11), w11};
}

BISEAM_NEON inline float32x4_t weighed(float32x4_t weight, uint32x4_t bytes) { return vmulq_f32(weight, vcvtq_f32_u32(bytes)); }

BISEAM_NEON inline uint32x4_t sum(float32x4_t a, float32x4_t b, float32x4_t c, float32x4_t d) {
  return vcvtq_u32_f32(vaddq_f32(vaddq_f32(vaddq_f32(a, b), c), d));
}

// A lane's sample and the one below.
template <int lane>
BISEAM_NEON inline void read_luma(const Split& at, const uint8_t* source, std::ptrdiff_t stride, uint8_t* upper,
                                  uint8_t* lower) {
  const uint8_t* pixel = locate(source, stride, vgetq_lane_u32(at.row, lane), vgetq_lane_u32(at.column, lane));
  upper[lane] = pixel[0];
  lower[lane] = pixel[stride];
}

BISEAM_NEON inline void read_luma_4(const Split& at, const uint8_t* source, std::ptrdiff_t stride, uint8_t* upper,
                                    uint8_t* lower) {
  read_luma<0>(at, source, stride, upper, lower);
  read_luma<1>(at, source, stride, upper, lower);
  read_luma<2>(at, source, stride, upper, lower);
  read_luma<3>(at, source, stride, upper, lower);
}

BISEAM_NEON inline uint16x4_t mix_luma(const Split& at, uint16x4_t upper_bytes, uint16x4_t lower_bytes) {
  const Weights w = weigh(at);
  const uint32x4_t upper = vmovl_u16(upper_bytes), lower = vmovl_u16(lower_bytes);
  return vmovn_u32(sum(weighed(w.w10, upper), weighed(w.w00, upper), weighed(w.w01, lower), weighed(w.w11, lower)));
}

BISEAM_NEON inline bool luma_8(const float* entries, const uint8_t* source, std::ptrdiff_t stride, uint8_t* destination) {
  uint8_t upper[kLuma], lower[kLuma];
  const Split a = split_luma(entries), b = split_luma(entries + 8);
  if (!same_with_flushing(a) || !same_with_flushing(b)) return false;
  read_luma_4(a, source, stride, upper, lower);
  read_luma_4(b, source, stride, upper + 4, lower + 4);
  const uint16x8_t above = vmovl_u8(vld1_u8(upper)), below = vmovl_u8(vld1_u8(lower));
  const uint16x4_t first = mix_luma(a, vget_low_u16(above), vget_low_u16(below));
  const uint16x4_t second = mix_luma(b, vget_high_u16(above), vget_high_u16(below));
  vst1_u8(destination, vmovn_u16(vcombine_u16(first, second)));
  return true;
}

// Four bytes of a lane's row and of the one below.
template <int lane>
BISEAM_NEON inline void read_chroma(const Split& at, const uint8_t* source, std::ptrdiff_t stride, uint32_t* upper,
                                    uint32_t* lower) {
  const uint8_t* quad = locate(source, stride, vgetq_lane_u32(at.row, lane), 2 * std::size_t{vgetq_lane_u32(at.column, lane)});
  std::memcpy(upper + lane, quad, 4);
  std::memcpy(lower + lane, quad + stride, 4);
}

// One component; byte: where its left sample lies among the four that are read of each row.
template <int byte>
BISEAM_NEON inline uint32x4_t mix_chroma(const Weights& w, uint32x4_t upper, uint32x4_t lower) {
  const uint32x4_t low = vdupq_n_u32(255);
  const int32x4_t left = vdupq_n_s32(-8 * byte), right = vdupq_n_s32(-8 * byte - 16);
  return sum(weighed(w.w00, vandq_u32(vshlq_u32(upper, left), low)), weighed(w.w10, vandq_u32(vshlq_u32(upper, right), low)),
             weighed(w.w01, vandq_u32(vshlq_u32(lower, left), low)), weighed(w.w11, vandq_u32(vshlq_u32(lower, right), low)));
}

BISEAM_NEON inline bool chroma_4(const float* entries, const uint8_t* source, std::ptrdiff_t stride, float y_scale,
                                 uint8_t* destination) {
  uint32_t upper[kChroma], lower[kChroma];
  const Split at = split_chroma(entries, y_scale);
  if (!same_with_flushing(at)) return false;
  read_chroma<0>(at, source, stride, upper, lower);
  read_chroma<1>(at, source, stride, upper, lower);
  read_chroma<2>(at, source, stride, upper, lower);
  read_chroma<3>(at, source, stride, upper, lower);
  const Weights w = weigh(at);
  const uint32x4_t above = vld1q_u32(upper), below = vld1q_u32(lower);
  const uint32x4_t first = mix_chroma<0>(w, above, below), second = mix_chroma<1>(w, above, below);
  const uint32x4_t pairs = vorrq_u32(vandq_u32(first, vdupq_n_u32(255)), vshlq_n_u32(second, 8));
  vst1_u8(destination, vreinterpret_u8_u16(vmovn_u32(pairs)));
  return true;
}

}  // namespace

BISEAM_NEON void sample_luma_row_neon(const float* entries, const uint8_t* source, std::ptrdiff_t stride, uint8_t* destination,
                                      int count) noexcept {
  int k = 0;
  for (; k + kLuma <= count; k += kLuma) {
    const float* first = entries + 2 * k;
    if (!luma_8(first, source, stride, destination + k)) sample_luma_row_scalar(first, source, stride, destination + k, kLuma);
  }
  sample_luma_row_scalar(entries + 2 * k, source, stride, destination + k, count - k);
}

BISEAM_NEON void sample_chroma_row_neon(const float* entries, const uint8_t* source, std::ptrdiff_t stride, float y_factor,
                                        uint8_t* destination, int count) noexcept {
  int k = 0;
  // A last pair always remains: the entry that it skips need not exist.
  for (; k + kChroma < count; k += kChroma) {
    const float* first = entries + 4 * k;
    if (!chroma_4(first, source, stride, 1.0f / y_factor, destination + 2 * k)) {
      sample_chroma_row_scalar(first, source, stride, y_factor, destination + 2 * k, kChroma);
    }
  }
  sample_chroma_row_scalar(entries + 4 * k, source, stride, y_factor, destination + 2 * k, count - k);
}

}  // namespace biseam

#endif
