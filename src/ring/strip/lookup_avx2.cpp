#include "ring/strip/lookup_kernels.hpp"

#if defined(BISEAM_X86_64)

#include "base/intrinsics.hpp"

namespace biseam::ring {

BISEAM_AVX2 void look_up_corrections_avx2(const int16_t* corrections, StripShape shape, const int32_t* t, const int32_t* b,
                                          int16_t* out, int count) noexcept {
  const __m256i zero = _mm256_setzero_si256(), one = _mm256_set1_epi32(1), bytes = _mm256_set1_epi32(255);
  const __m256i turn = _mm256_set1_epi32(shape.length << 16), last = _mm256_set1_epi32((shape.width - 1) << 16);
  const __m256i length = _mm256_set1_epi32(shape.length), width = _mm256_set1_epi32(shape.width);
  const __m256i last_pair = _mm256_set1_epi32(shape.width - 2), whole = _mm256_set1_epi32(256);
  const int* pairs = reinterpret_cast<const int*>(corrections);
  int i = 0;
  for (; i + 8 <= count; i += 8) {
    __m256i at_t = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(t + i));
    __m256i at_b = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(b + i));
    const __m256i below = _mm256_cmpgt_epi32(zero, at_t), above = _mm256_cmpgt_epi32(turn, at_t);
    at_t = _mm256_add_epi32(at_t, _mm256_and_si256(below, turn));
    at_t = _mm256_sub_epi32(at_t, _mm256_andnot_si256(above, turn));
    at_b = _mm256_min_epi32(_mm256_max_epi32(at_b, zero), last);
    const __m256i row = _mm256_srai_epi32(at_t, 16);
    __m256i next = _mm256_add_epi32(row, one);
    next = _mm256_and_si256(next, _mm256_cmpgt_epi32(length, next));
    const __m256i column = _mm256_min_epi32(_mm256_srai_epi32(at_b, 16), last_pair);
    const __m256i along = _mm256_and_si256(_mm256_srli_epi32(at_t, 8), bytes);
    const __m256i across = _mm256_srai_epi32(_mm256_sub_epi32(at_b, _mm256_slli_epi32(column, 16)), 8);
    const __m256i pair_weights = _mm256_or_si256(_mm256_sub_epi32(whole, across), _mm256_slli_epi32(across, 16));
    const __m256i here = _mm256_i32gather_epi32(pairs, _mm256_add_epi32(_mm256_mullo_epi32(row, width), column), 2);
    const __m256i after = _mm256_i32gather_epi32(pairs, _mm256_add_epi32(_mm256_mullo_epi32(next, width), column), 2);
    const __m256i near = _mm256_mullo_epi32(_mm256_madd_epi16(here, pair_weights), _mm256_sub_epi32(whole, along));
    const __m256i far = _mm256_mullo_epi32(_mm256_madd_epi16(after, pair_weights), along);
    const __m256i sum = _mm256_add_epi32(_mm256_add_epi32(near, far), _mm256_set1_epi32(32768));
    const __m256i value = _mm256_srai_epi32(sum, 16);
    const __m256i packed = _mm256_permute4x64_epi64(_mm256_packs_epi32(value, value), 0x08);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm256_castsi256_si128(packed));
  }
  kLookUpCorrections.scalar(corrections, shape, t + i, b + i, out + i, count - i);
}

}  // namespace biseam::ring

#endif
