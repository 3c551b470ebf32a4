#include "frame/remap/sample_row.hpp"

#if defined(BISEAM_X86_64)

#include <algorithm>
#include <cstring>

#include "base/intrinsics.hpp"

#define BISEAM_STEP BISEAM_INLINED BISEAM_AVX2

// Vectors for the arithmetic only.  Without a permutation of two registers' bytes a window costs more than it saves, and
// gathers are no faster than loads, on many processors much slower.
namespace biseam {

namespace {

constexpr int kLuma = 16, kChroma = 8;  // samples of one step

// Eight positions split into the samples that are read and the fractions beyond.
struct Split {
  __m256i column, row;
  __m256 fx, fy;
};

struct Weights {
  __m256 w00, w10, w01, w11;
};

BISEAM_STEP __m256i load(const void* values) { return _mm256_load_si256(static_cast<const __m256i*>(values)); }
BISEAM_STEP void store(void* values, __m256i lanes) { _mm256_store_si256(static_cast<__m256i*>(values), lanes); }

// Whether 32 bits hold it, as they do in every record.
bool is_narrow(std::ptrdiff_t stride) { return stride == static_cast<int32_t>(stride); }

BISEAM_STEP __m256 not_negative(__m256 value) { return _mm256_max_ps(value, _mm256_setzero_ps()); }  // 0 for NaN

BISEAM_STEP Split split(__m256 u, __m256 v) {
  const __m256i column = _mm256_cvttps_epi32(not_negative(u)), row = _mm256_cvttps_epi32(not_negative(v));
  return {column, row, _mm256_sub_ps(u, _mm256_cvtepi32_ps(column)), _mm256_sub_ps(v, _mm256_cvtepi32_ps(row))};
}

// Byte offsets of eight samples, of the even lanes and of the odd ones.
struct Offsets {
  alignas(32) int64_t even[4], odd[4];
};

template <int sample_bytes>
BISEAM_STEP void locate_all(const Split& at, std::ptrdiff_t stride, Offsets& offsets) {
  const __m256i strides = _mm256_set1_epi64x(stride), low = _mm256_set1_epi64x(0xFFFFFFFF);
  const __m256i even = _mm256_mul_epi32(at.row, strides), odd = _mm256_mul_epi32(_mm256_srli_epi64(at.row, 32), strides);
  const __m256i even_column = _mm256_and_si256(at.column, low), odd_column = _mm256_srli_epi64(at.column, 32);
  store(offsets.even, _mm256_add_epi64(even, _mm256_slli_epi64(even_column, sample_bytes - 1)));
  store(offsets.odd, _mm256_add_epi64(odd, _mm256_slli_epi64(odd_column, sample_bytes - 1)));
}

// The conversion gives 2^31 for all that is past its range.
BISEAM_STEP bool in_range(const Split& at) {
  return _mm256_movemask_ps(_mm256_castsi256_ps(_mm256_or_si256(at.column, at.row))) == 0;
}

// The lanes stand for entries 0, 1, 4, 5, 2, 3, 6, 7.
BISEAM_STEP Split split_luma(const float* entries) {
  const __m256 a = _mm256_loadu_ps(entries), b = _mm256_loadu_ps(entries + 8);
  return split(_mm256_shuffle_ps(a, b, 0x88), _mm256_shuffle_ps(a, b, 0xDD));
}

// The lanes stand for pairs 0, 2, 4, 6, 1, 3, 5, 7.  The last load ends where the last entry does.
BISEAM_STEP Split split_chroma(const float* entries, float y_scale) {
  const __m256 a = _mm256_loadu_ps(entries), b = _mm256_loadu_ps(entries + 8), c = _mm256_loadu_ps(entries + 16);
  const __m256 d = _mm256_permute_ps(_mm256_loadu_ps(entries + 22), 0xEE);
  const __m256d ab = _mm256_castps_pd(_mm256_unpacklo_ps(a, b)), cd = _mm256_castps_pd(_mm256_unpacklo_ps(c, d));
  const __m256 u = _mm256_castpd_ps(_mm256_unpacklo_pd(ab, cd)), v = _mm256_castpd_ps(_mm256_unpackhi_pd(ab, cd));
  return split(_mm256_mul_ps(u, _mm256_set1_ps(0.5f)), _mm256_mul_ps(v, _mm256_set1_ps(y_scale)));
}

BISEAM_STEP Weights weigh(const Split& at) {
  const __m256 w11 = _mm256_mul_ps(at.fx, at.fy), w10 = _mm256_sub_ps(at.fx, w11);
  return {_mm256_sub_ps(_mm256_sub_ps(_mm256_set1_ps(1.0f), at.fy), w10), w10, _mm256_sub_ps(at.fy, w11), w11};
}

BISEAM_STEP __m256 weighed(__m256 weight, __m256i bytes) { return _mm256_mul_ps(weight, _mm256_cvtepi32_ps(bytes)); }

// The truncated sum's low byte.  Between 2^31 and 2^32 that is the low byte of what the conversion gives, 0.
BISEAM_STEP __m256i sum(__m256 a, __m256 b, __m256 c, __m256 d) {
  const __m256 value = not_negative(_mm256_add_ps(_mm256_add_ps(_mm256_add_ps(a, b), c), d));
  const __m256 over = _mm256_cmp_ps(value, _mm256_set1_ps(4294967296.0f), _CMP_GE_OQ);
  return _mm256_and_si256(_mm256_or_si256(_mm256_cvttps_epi32(value), _mm256_castps_si256(over)), _mm256_set1_epi32(255));
}

BISEAM_STEP __m256i mix_luma(const Split& at, const uint8_t* upper_bytes, const uint8_t* lower_bytes) {
  const Weights w = weigh(at);
  const __m256i upper = _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(upper_bytes)));
  const __m256i lower = _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(lower_bytes)));
  return sum(weighed(w.w10, upper), weighed(w.w00, upper), weighed(w.w01, lower), weighed(w.w11, lower));
}

// The samples of eight lanes and those below.
BISEAM_STEP void read_luma(const Split& at, const uint8_t* source, std::ptrdiff_t stride, uint8_t* upper, uint8_t* lower) {
  Offsets offsets;
  locate_all<1>(at, stride, offsets);
  ask_for(source, offsets.even[0] + kRowsAhead * stride);
  for (int i = 0; i < 4; ++i) {
    const uint8_t *even = source + offsets.even[i], *odd = source + offsets.odd[i];
    upper[2 * i] = even[0];
    upper[2 * i + 1] = odd[0];
    lower[2 * i] = even[stride];
    lower[2 * i + 1] = odd[stride];
  }
}

BISEAM_STEP bool luma_16(const float* entries, const uint8_t* source, std::ptrdiff_t stride, uint8_t* destination) {
  alignas(16) uint8_t upper[kLuma], lower[kLuma];
  const Split a = split_luma(entries), b = split_luma(entries + 16);
  if (!in_range(a) || !in_range(b)) return false;
  read_luma(a, source, stride, upper, lower);
  read_luma(b, source, stride, upper + 8, lower + 8);
  const __m256i words = _mm256_packus_epi32(mix_luma(a, upper, lower), mix_luma(b, upper + 8, lower + 8));
  const __m128i bytes = _mm_packus_epi16(_mm256_castsi256_si128(words), _mm256_extracti128_si256(words, 1));
  const __m128i order = _mm_setr_epi8(0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(destination), _mm_shuffle_epi8(bytes, order));
  return true;
}

// One component of eight pairs; byte: where its left sample lies among the four that are read of each row.
template <int byte>
BISEAM_STEP __m256i mix_chroma(const Weights& w, __m256i upper, __m256i lower) {
  const __m256i low = _mm256_set1_epi32(255);
  const __m256i p00 = _mm256_and_si256(_mm256_srli_epi32(upper, 8 * byte), low);
  const __m256i p10 = _mm256_and_si256(_mm256_srli_epi32(upper, 8 * byte + 16), low);
  const __m256i p01 = _mm256_and_si256(_mm256_srli_epi32(lower, 8 * byte), low);
  const __m256i p11 = _mm256_and_si256(_mm256_srli_epi32(lower, 8 * byte + 16), low);
  return sum(weighed(w.w00, p00), weighed(w.w10, p10), weighed(w.w01, p01), weighed(w.w11, p11));
}

BISEAM_STEP bool chroma_8(const float* entries, const uint8_t* source, std::ptrdiff_t stride, float y_scale,
                          uint8_t* destination) {
  alignas(32) uint8_t upper[kChroma][4], lower[kChroma][4];
  Offsets offsets;
  const Split at = split_chroma(entries, y_scale);
  if (!in_range(at)) return false;
  locate_all<2>(at, stride, offsets);
  ask_for(source, offsets.even[0] + kRowsAhead * stride);
  for (int i = 0; i < 4; ++i) {
    const uint8_t *even = source + offsets.even[i], *odd = source + offsets.odd[i];
    std::memcpy(upper[2 * i], even, 4);
    std::memcpy(upper[2 * i + 1], odd, 4);
    std::memcpy(lower[2 * i], even + stride, 4);
    std::memcpy(lower[2 * i + 1], odd + stride, 4);
  }
  const Weights w = weigh(at);
  const __m256i first = mix_chroma<0>(w, load(upper), load(lower)), second = mix_chroma<1>(w, load(upper), load(lower));
  const __m256i pairs = _mm256_or_si256(first, _mm256_slli_epi32(second, 8));
  const __m128i even_odd = _mm_packus_epi32(_mm256_castsi256_si128(pairs), _mm256_extracti128_si256(pairs, 1));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(destination),
                   _mm_unpacklo_epi16(even_odd, _mm_unpackhi_epi64(even_odd, even_odd)));
  return true;
}

}  // namespace

// The last step of a row ends with the row and may repeat samples.

BISEAM_AVX2 void sample_luma_row_avx2(const float* entries, const uint8_t* source, std::ptrdiff_t stride, uint8_t* destination,
                                      int count) noexcept {
  if (count < kLuma || !is_narrow(stride)) return sample_luma_row_scalar(entries, source, stride, destination, count);
  const int last = count - kLuma;
  for (int k = 0;; k = std::min(k + kLuma, last)) {
    const float* first = entries + 2 * k;
    ask_for(first, kFloatsAhead * sizeof(float));
    ask_for(first, (kFloatsAhead + kLuma) * sizeof(float));
    if (!luma_16(first, source, stride, destination + k)) sample_luma_row_scalar(first, source, stride, destination + k, kLuma);
    if (k == last) return;
  }
}

BISEAM_AVX2 void sample_chroma_row_avx2(const float* entries, const uint8_t* source, std::ptrdiff_t stride, float y_factor,
                                        uint8_t* destination, int count) noexcept {
  if (count < kChroma || !is_narrow(stride)) {
    return sample_chroma_row_scalar(entries, source, stride, y_factor, destination, count);
  }
  const int last = count - kChroma;
  for (int k = 0;; k = std::min(k + kChroma, last)) {
    const float* first = entries + 4 * k;
    if (!chroma_8(first, source, stride, 1.0f / y_factor, destination + 2 * k)) {
      sample_chroma_row_scalar(first, source, stride, y_factor, destination + 2 * k, kChroma);
    }
    if (k == last) return;
  }
}

}  // namespace biseam

#endif
