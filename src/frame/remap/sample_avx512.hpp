#pragma once

#include "frame/remap/sample_row.hpp"
#include "stages/lens/sample.hpp"

#if defined(BISEAM_X86_64)

#include "base/intrinsics.hpp"

#define BISEAM_STEP BISEAM_INLINED BISEAM_AVX512

// The steps that the loops over a row and over a pair of rows are made of.  Neighbouring entries name neighbouring samples: a
// window of a few rows is laid over the picture, loaded whole, and the samples are taken out of registers, which costs a
// fraction of a load for each.
namespace biseam {

constexpr int kLuma = 16, kChroma = 8;  // samples of one vector; a chroma sample takes two lanes, one for each component

// Added to a position and rounded toward zero, 2^23 leaves its integer part in the lowest bits.
constexpr float kIntegerPart = 8388608.0f;
constexpr uint32_t kIntegerBits = 0x4B000000;

// Positions that the windows know: columns and rows of 15 bits, so that the differences of 16 bits that end beyond a window's
// left or upper edge are negative.
constexpr uint32_t kLastKnown = 0x7FFF;

struct Positions {
  __m512 u, v;
};

// Positions split into the samples that are read, with the bits above them as kIntegerBits has them, and the fractions beyond.
struct Split {
  __m512i column, row;
  __m512 fx, fy;
};

// Where in a window the samples lie: column in the lower, row in the upper half of each lane.
struct Place {
  const uint8_t* window;  // null: they are too far apart
  __m512i x_y;
};

// Bytes in 32-bit lanes.
struct Luma {
  __m512i upper, lower;
};
struct Chroma {
  __m512i p00, p10, p01, p11;
};

// A window's rows in pairs of registers, from its first row and from its second one.
struct Window {
  __m512i low, high, low_below, high_below;
};

struct Weights {
  __m512 w00, w10, w01, w11;
};

BISEAM_STEP __m512i all(uint32_t value) { return _mm512_set1_epi32(static_cast<int>(value)); }
BISEAM_STEP __m512 all(float value) { return _mm512_set1_ps(value); }

BISEAM_STEP Positions luma_positions(const float* entries) {
  const __m512i u = _mm512_setr_epi32(0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
  const __m512i v = _mm512_setr_epi32(1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31);
  const __m512 a = _mm512_loadu_ps(entries), b = _mm512_loadu_ps(entries + 16);
  return {_mm512_permutex2var_ps(a, u, b), _mm512_permutex2var_ps(a, v, b)};
}

// Exact for what is known; everything else, NaN included, leaves bits that is_known refuses.
BISEAM_STEP __m512 with_integer_part(__m512 value) {
  return _mm512_add_round_ps(value, all(kIntegerPart), _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC);
}

BISEAM_STEP Split split(const Positions& at) {
  const __m512 column = with_integer_part(at.u), row = with_integer_part(at.v);
  return {_mm512_castps_si512(column), _mm512_castps_si512(row), _mm512_sub_ps(at.u, _mm512_sub_ps(column, all(kIntegerPart))),
          _mm512_sub_ps(at.v, _mm512_sub_ps(row, all(kIntegerPart)))};
}

// Whether all positions whose columns and rows these bits are made of are known.
BISEAM_STEP bool is_known(__m512i bits) {
  return _mm512_cmpgt_epu32_mask(_mm512_sub_epi32(bits, all(kIntegerBits)), all(kLastKnown)) == 0;
}

// Known columns and rows as the halves of 32-bit lanes.
BISEAM_STEP __m512i pair_up(const Split& at) {
  return _mm512_mask_blend_epi16(0xAAAAAAAA, at.column, _mm512_slli_epi32(at.row, 16));
}

// The largest column and the largest row, in every lane.
BISEAM_STEP __m128i last_column_and_row(__m512i pairs) {
  const __m256i eight = _mm256_max_epu16(_mm512_castsi512_si256(pairs), _mm512_extracti64x4_epi64(pairs, 1));
  const __m128i four = _mm_max_epu16(_mm256_castsi256_si128(eight), _mm256_extracti128_si256(eight, 1));
  const __m128i two = _mm_max_epu16(four, _mm_shuffle_epi32(four, 0x4E));
  return _mm_max_epu16(two, _mm_shuffle_epi32(two, 0xB1));
}

// A window of width x height samples, powers of two, each read with so many to its right.  It ends at the last column and row
// that are read.
template <int width_, int height_, int neighbours_, int sample_bytes_>
struct WindowShape {
  static constexpr uint32_t kSize = width_ | height_ << 16;
  static constexpr uint32_t kReach = (width_ - 1 - neighbours_) | (height_ - 1) << 16;
  static constexpr int kSampleBytes = sample_bytes_;
};
using LumaShape = WindowShape<16, 8, 0, 1>;
using ChromaShape = WindowShape<16, 4, 1, 2>;

// The window's first column and row, in every lane.
template <class Shape>
BISEAM_STEP __m128i window_corner(__m512i pairs) {
  return _mm_sub_epi16(last_column_and_row(pairs), _mm_set1_epi32(static_cast<int>(Shape::kReach)));
}

BISEAM_STEP __m512i in_window(__m512i pairs, __m128i corner) {
  return _mm512_sub_epi16(pairs, _mm512_broadcastd_epi32(corner));
}

// The window, or null if it begins outside the picture or one of the places, of which x_y has the bits, lies outside of it.
template <class Shape>
BISEAM_STEP const uint8_t* window_at(__m128i corner, __m512i x_y, const uint8_t* source, std::ptrdiff_t stride) {
  const uint32_t left_top = static_cast<uint32_t>(_mm_cvtsi128_si32(corner)), left = left_top & 0xFFFF, top = left_top >> 16;
  const __mmask32 inside = _mm512_cmplt_epu16_mask(x_y, all(Shape::kSize));
  if (left > kLastKnown || top > kLastKnown || inside != 0xFFFFFFFF) return nullptr;
  return locate(source, stride, top, std::size_t{left} * Shape::kSampleBytes);
}

template <class Shape>
BISEAM_STEP Place place(__m512i pairs, bool known, const uint8_t* source, std::ptrdiff_t stride) {
  const __m128i corner = window_corner<Shape>(pairs);
  const __m512i x_y = in_window(pairs, corner);
  return {known ? window_at<Shape>(corner, x_y, source, stride) : nullptr, x_y};
}

BISEAM_STEP __m128i load_16(const uint8_t* bytes) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes)); }
BISEAM_STEP __m256i load_32(const uint8_t* bytes) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes)); }

BISEAM_STEP __m512i load_4x16(const uint8_t* bytes, std::ptrdiff_t stride) {
  const __m512i half = _mm512_inserti32x4(_mm512_castsi128_si512(load_16(bytes)), load_16(bytes + stride), 1);
  return _mm512_inserti32x4(_mm512_inserti32x4(half, load_16(bytes + 2 * stride), 2), load_16(bytes + 3 * stride), 3);
}

BISEAM_STEP __m512i load_2x32(const uint8_t* bytes, std::ptrdiff_t stride) {
  return _mm512_inserti64x4(_mm512_castsi256_si512(load_32(bytes)), load_32(bytes + stride), 1);
}

BISEAM_STEP Window load_luma(const uint8_t* window, std::ptrdiff_t stride) {
  _mm_prefetch(window + (8 + kRowsAhead) * stride, _MM_HINT_T0);
  const __m512i rows0 = load_4x16(window, stride), rows4 = load_4x16(window + 4 * stride, stride);
  const __m512i row8 = _mm512_castsi128_si512(load_16(window + 8 * stride));
  return {rows0, rows4, _mm512_alignr_epi64(rows4, rows0, 2), _mm512_alignr_epi64(row8, rows4, 2)};
}

BISEAM_STEP Window load_chroma(const uint8_t* window, std::ptrdiff_t stride) {
  _mm_prefetch(window + (4 + kRowsAhead) * stride, _MM_HINT_T0);
  const __m512i rows0 = load_2x32(window, stride), rows2 = load_2x32(window + 2 * stride, stride);
  const __m512i row4 = _mm512_castsi256_si512(load_32(window + 4 * stride));
  return {rows0, rows2, _mm512_alignr_epi64(rows2, rows0, 4), _mm512_alignr_epi64(row4, rows2, 4)};
}

// One byte for each lane out of 128.
BISEAM_STEP __m512i pick(__m512i low, __m512i index, __m512i high) {
  return _mm512_maskz_permutex2var_epi8(0x1111111111111111, low, index, high);
}

BISEAM_STEP Luma pick_luma(const Window& rows, __m512i x_y) {
  const __m512i index = _mm512_or_epi32(_mm512_srli_epi32(x_y, 12), x_y);  // 16 y + x
  return {pick(rows.low, index, rows.high), pick(rows.low_below, index, rows.high_below)};
}

BISEAM_STEP Chroma pick_chroma(const Window& rows, __m512i x_y) {
  const __m512i component = _mm512_setr_epi32(0, 1, 0, 1, 0, 1, 0, 1, 0, 1, 0, 1, 0, 1, 0, 1);
  const __m512i left =  // 32 y + 2 x, and the component
      _mm512_or_epi32(_mm512_or_epi32(_mm512_srli_epi32(x_y, 11), _mm512_slli_epi32(x_y, 1)), component);
  const __m512i right = _mm512_add_epi32(left, all(2u));
  return {pick(rows.low, left, rows.high), pick(rows.low, right, rows.high), pick(rows.low_below, left, rows.high_below),
          pick(rows.low_below, right, rows.high_below)};
}

BISEAM_STEP Weights weigh(__m512 fx, __m512 fy) {
  const __m512 w11 = _mm512_mul_ps(fx, fy), w10 = _mm512_sub_ps(fx, w11);
  return {_mm512_sub_ps(_mm512_sub_ps(all(1.0f), fy), w10), w10, _mm512_sub_ps(fy, w11), w11};
}

BISEAM_STEP __m512 weighed(__m512 weight, __m512i bytes) { return _mm512_mul_ps(weight, _mm512_cvtepi32_ps(bytes)); }

// Fractions from 0 to 1 make a sum between -1, by rounding, and 256.
BISEAM_STEP void store_sum(uint8_t* destination, __m512 a, __m512 b, __m512 c, __m512 d) {
  const __m512i sum = _mm512_cvttps_epi32(_mm512_add_ps(_mm512_add_ps(_mm512_add_ps(a, b), c), d));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(destination), _mm512_cvtepi32_epi8(sum));
}

BISEAM_STEP void mix_luma(__m512 fx, __m512 fy, const Luma& luma, uint8_t* destination) {
  const Weights w = weigh(fx, fy);
  store_sum(destination, weighed(w.w10, luma.upper), weighed(w.w00, luma.upper), weighed(w.w01, luma.lower),
            weighed(w.w11, luma.lower));
}

BISEAM_STEP void mix_chroma(__m512 fx, __m512 fy, const Chroma& chroma, uint8_t* destination) {
  const Weights w = weigh(fx, fy);
  store_sum(destination, weighed(w.w00, chroma.p00), weighed(w.w10, chroma.p10), weighed(w.w01, chroma.p01),
            weighed(w.w11, chroma.p11));
}

}  // namespace biseam

#endif
