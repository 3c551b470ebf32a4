#include "geometry/sample_kernels.hpp"

#if defined(BISEAM_X86_64)

#include <algorithm>

#include "cpu/x86_intrinsics.hpp"

#define BISEAM_STEP [[gnu::always_inline]] BISEAM_AVX512 inline

namespace biseam {

namespace {

constexpr int kLuma = 16, kChroma = 8;  // samples of one vector; a chroma sample takes two lanes, one for each component

// Windows begin left of and above this; the differences of 16 bits that end beyond are negative.
constexpr uint32_t kMostSide = 0x7FFF;

// 16 positions split into the samples that are read and the fractions beyond.
struct Split {
  __m512i column, row;
  __m512 fx, fy;
};

// Where in a window the samples lie.
struct Place {
  const uint8_t* window;  // null: they are too far apart
  __m512i x_y;            // column in the lower, row in the upper half of each lane
};

// Bytes in 32-bit lanes.
struct Luma {
  __m512i upper, lower;
};
struct Chroma {
  __m512i p00, p10, p01, p11;
};

struct Weights {
  __m512 w00, w10, w01, w11;
};

BISEAM_STEP __m512i all(uint32_t value) { return _mm512_set1_epi32(static_cast<int>(value)); }

// max gives its second operand for NaN, the conversion all ones past its range.
BISEAM_STEP __m512i truncate(__m512 value) { return _mm512_cvttps_epu32(_mm512_max_ps(value, _mm512_setzero_ps())); }

BISEAM_STEP Split split(__m512 u, __m512 v) {
  const __m512i column = truncate(u), row = truncate(v);
  return {column, row, _mm512_sub_ps(u, _mm512_cvtepu32_ps(column)), _mm512_sub_ps(v, _mm512_cvtepu32_ps(row))};
}

BISEAM_STEP Split split_luma(const float* entries) {
  const __m512i u = _mm512_setr_epi32(0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
  const __m512i v = _mm512_setr_epi32(1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31);
  const __m512 a = _mm512_loadu_ps(entries), b = _mm512_loadu_ps(entries + 16);
  return split(_mm512_permutex2var_ps(a, u, b), _mm512_permutex2var_ps(a, v, b));
}

// The second load ends where the last entry does, two floats short of the next one's place.
BISEAM_STEP Split split_chroma(const float* entries, float y_scale) {
  const __m512i u = _mm512_setr_epi32(0, 0, 4, 4, 8, 8, 12, 12, 18, 18, 22, 22, 26, 26, 30, 30);
  const __m512i v = _mm512_setr_epi32(1, 1, 5, 5, 9, 9, 13, 13, 19, 19, 23, 23, 27, 27, 31, 31);
  const __m512 a = _mm512_loadu_ps(entries), b = _mm512_loadu_ps(entries + 14);
  return split(_mm512_mul_ps(_mm512_permutex2var_ps(a, u, b), _mm512_set1_ps(0.5f)),
               _mm512_mul_ps(_mm512_permutex2var_ps(a, v, b), _mm512_set1_ps(y_scale)));
}

// Columns and rows, saturated, as the halves of 32-bit lanes.
BISEAM_STEP __m512i pair_up(const Split& at) {
  const __m512i most = all(0xFFFF);
  return _mm512_or_epi32(_mm512_min_epu32(at.column, most), _mm512_slli_epi32(_mm512_min_epu32(at.row, most), 16));
}

// The largest column and the largest row, in every lane.
BISEAM_STEP __m128i last_column_and_row(__m512i pairs) {
  const __m256i eight = _mm256_max_epu16(_mm512_castsi512_si256(pairs), _mm512_extracti64x4_epi64(pairs, 1));
  const __m128i four = _mm_max_epu16(_mm256_castsi256_si128(eight), _mm256_extracti128_si256(eight, 1));
  const __m128i two = _mm_max_epu16(four, _mm_shuffle_epi32(four, 0x4E));
  return _mm_max_epu16(two, _mm_shuffle_epi32(two, 0xB1));
}

// In a window of width x height samples, each read with so many to its right.  A column or row that saturated is far outside or
// leaves the window's own beyond kMostSide.
template <int width, int height, int neighbours, int sample_bytes>
BISEAM_STEP Place place(const Split& at, const uint8_t* source, std::ptrdiff_t stride) {
  constexpr uint32_t size = width | height << 16, reach = (width - 1 - neighbours) | (height - 1) << 16;
  const __m512i pairs = pair_up(at);
  const __m128i corner = _mm_sub_epi16(last_column_and_row(pairs), _mm_set1_epi32(static_cast<int>(reach)));
  const __m512i x_y = _mm512_sub_epi16(pairs, _mm512_broadcastd_epi32(corner));
  const uint32_t left_top = static_cast<uint32_t>(_mm_cvtsi128_si32(corner)), left = left_top & 0xFFFF, top = left_top >> 16;
  const __mmask32 inside = _mm512_cmplt_epu16_mask(x_y, all(size));
  if (left > kMostSide || top > kMostSide || inside != 0xFFFFFFFF) return {nullptr, x_y};
  return {locate(source, stride, top, std::size_t{left} * sample_bytes), x_y};
}

BISEAM_STEP Place place_luma(const Split& at, const uint8_t* source, std::ptrdiff_t stride) {
  return place<16, 8, 0, 1>(at, source, stride);
}

BISEAM_STEP Place place_chroma(const Split& at, const uint8_t* source, std::ptrdiff_t stride) {
  return place<16, 4, 1, 2>(at, source, stride);
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

// One byte for each lane out of 128.
BISEAM_STEP __m512i pick(__m512i low, __m512i index, __m512i high) {
  return _mm512_maskz_permutex2var_epi8(0x1111111111111111, low, index, high);
}

BISEAM_STEP Luma read_luma(const Place& at, std::ptrdiff_t stride) {
  ask_for(at.window, (8 + kRowsAhead) * stride);
  const __m512i rows0 = load_4x16(at.window, stride), rows4 = load_4x16(at.window + 4 * stride, stride);
  const __m512i rows1 = _mm512_alignr_epi64(rows4, rows0, 2);
  const __m512i rows5 = _mm512_alignr_epi64(_mm512_castsi128_si512(load_16(at.window + 8 * stride)), rows4, 2);
  const __m512i index = _mm512_or_epi32(_mm512_srli_epi32(at.x_y, 12), at.x_y);  // 16 y + x
  return {pick(rows0, index, rows4), pick(rows1, index, rows5)};
}

BISEAM_STEP Chroma read_chroma(const Place& at, std::ptrdiff_t stride) {
  ask_for(at.window, (4 + kRowsAhead) * stride);
  const __m512i rows0 = load_2x32(at.window, stride), rows2 = load_2x32(at.window + 2 * stride, stride);
  const __m512i rows1 = _mm512_alignr_epi64(rows2, rows0, 4);
  const __m512i rows3 = _mm512_alignr_epi64(_mm512_castsi256_si512(load_32(at.window + 4 * stride)), rows2, 4);
  const __m512i component = _mm512_setr_epi32(0, 1, 0, 1, 0, 1, 0, 1, 0, 1, 0, 1, 0, 1, 0, 1);
  const __m512i left =  // 32 y + 2 x, and the component
      _mm512_or_epi32(_mm512_or_epi32(_mm512_srli_epi32(at.x_y, 11), _mm512_slli_epi32(at.x_y, 1)), component);
  const __m512i right = _mm512_add_epi32(left, all(2));
  return {pick(rows0, left, rows2), pick(rows0, right, rows2), pick(rows1, left, rows3), pick(rows1, right, rows3)};
}

BISEAM_STEP Weights weigh(const Split& at) {
  const __m512 w11 = _mm512_mul_ps(at.fx, at.fy), w10 = _mm512_sub_ps(at.fx, w11);
  return {_mm512_sub_ps(_mm512_sub_ps(_mm512_set1_ps(1.0f), at.fy), w10), w10, _mm512_sub_ps(at.fy, w11), w11};
}

BISEAM_STEP __m512 weighed(__m512 weight, __m512i bytes) { return _mm512_mul_ps(weight, _mm512_cvtepi32_ps(bytes)); }

BISEAM_STEP void store_sum(uint8_t* destination, __m512 a, __m512 b, __m512 c, __m512 d) {
  const __m512i sum = truncate(_mm512_add_ps(_mm512_add_ps(_mm512_add_ps(a, b), c), d));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(destination), _mm512_cvtepi32_epi8(sum));
}

BISEAM_STEP void mix_luma(const Split& at, const Luma& luma, uint8_t* destination) {
  const Weights w = weigh(at);
  store_sum(destination, weighed(w.w10, luma.upper), weighed(w.w00, luma.upper), weighed(w.w01, luma.lower),
            weighed(w.w11, luma.lower));
}

BISEAM_STEP void mix_chroma(const Split& at, const Chroma& chroma, uint8_t* destination) {
  const Weights w = weigh(at);
  store_sum(destination, weighed(w.w00, chroma.p00), weighed(w.w10, chroma.p10), weighed(w.w01, chroma.p01),
            weighed(w.w11, chroma.p11));
}

}  // namespace

// Both loops find the place of the next vector before they mix the one at hand: neither step waits for the other.  The last
// vector ends with the row and may repeat samples.

BISEAM_AVX512 void sample_luma_row_avx512(const float* entries, const uint8_t* source, std::ptrdiff_t stride,
                                          uint8_t* destination, int count) noexcept {
  if (count < kLuma) return sample_luma_row_scalar(entries, source, stride, destination, count);
  const int last = count - kLuma;
  Split at = split_luma(entries);
  Place position = place_luma(at, source, stride);
  for (int k = 0;;) {
    const int next = std::min(k + kLuma, last);
    ask_for(entries + 2 * next, kFloatsAhead * sizeof(float));
    ask_for(entries + 2 * next, (kFloatsAhead + kLuma) * sizeof(float));
    const Split next_at = split_luma(entries + 2 * next);
    const Place next_place = place_luma(next_at, source, stride);
    if (position.window != nullptr) {
      mix_luma(at, read_luma(position, stride), destination + k);
    } else {
      sample_luma_row_avx2(entries + 2 * k, source, stride, destination + k, kLuma);
    }
    if (k == last) return;
    k = next, at = next_at, position = next_place;
  }
}

BISEAM_AVX512 void sample_chroma_row_avx512(const float* entries, const uint8_t* source, std::ptrdiff_t stride, float x_factor,
                                            float y_factor, uint8_t* destination, int count) noexcept {
  if (count < kChroma || !is_engine_chroma(x_factor, y_factor)) {
    return sample_chroma_row_scalar(entries, source, stride, x_factor, y_factor, destination, count);
  }
  const float y_scale = 1.0f / y_factor;
  const int last = count - kChroma;
  Split at = split_chroma(entries, y_scale);
  Place position = place_chroma(at, source, stride);
  for (int k = 0;;) {
    const int next = std::min(k + kChroma, last);
    const Split next_at = split_chroma(entries + 4 * next, y_scale);
    const Place next_place = place_chroma(next_at, source, stride);
    if (position.window != nullptr) {
      mix_chroma(at, read_chroma(position, stride), destination + 2 * k);
    } else {
      sample_chroma_row_avx2(entries + 4 * k, source, stride, x_factor, y_factor, destination + 2 * k, kChroma);
    }
    if (k == last) return;
    k = next, at = next_at, position = next_place;
  }
}

}  // namespace biseam

#endif
