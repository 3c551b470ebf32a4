#include "base/intrinsics.hpp"
#include "ring/strip/lookup.hpp"

#if defined(BISEAM_X86_64)

// Eight places at a time; neighbours across, two words, are gathered together.
namespace biseam::ring {

namespace {

BISEAM_AVX2 inline __m256i all(int32_t value) { return _mm256_set1_epi32(value); }

BISEAM_AVX2 inline __m256i load(const int32_t* values) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(values)); }

BISEAM_AVX2 inline __m256i gather_pairs(const int16_t* samples, __m256i offsets) {
  return _mm256_i32gather_epi32(reinterpret_cast<const int*>(samples), offsets, 2);
}

// What two neighbours weigh, as words: 256 less the distance from the first one, and the distance.
BISEAM_AVX2 inline __m256i weights_of(__m256i distance) {
  return _mm256_or_si256(_mm256_sub_epi32(all(256), distance), _mm256_slli_epi32(distance, 16));
}

}  // namespace

BISEAM_AVX2 void look_up_corrections_avx2(const int16_t* corrections, StripShape shape, const int32_t* t, const int32_t* b,
                                          int32_t* out, int count) noexcept {
  const __m256i turn = all(shape.length << 16), end = all((shape.length << 16) - 1), length = all(shape.length - 1);
  const __m256i last = all((shape.width - 1) << 16), second_last = all(shape.width - 2), width = all(shape.width);
  int i = 0;
  for (; i + 8 <= count; i += 8) {
    const __m256i given = load(t + i);
    const __m256i risen = _mm256_add_epi32(given, _mm256_and_si256(turn, _mm256_srai_epi32(given, 31)));
    const __m256i at_t = _mm256_sub_epi32(risen, _mm256_and_si256(turn, _mm256_cmpgt_epi32(risen, end)));
    const __m256i at_b = _mm256_min_epi32(_mm256_max_epi32(load(b + i), _mm256_setzero_si256()), last);
    const __m256i row = _mm256_srli_epi32(at_t, 16), column = _mm256_min_epi32(_mm256_srli_epi32(at_b, 16), second_last);
    const __m256i next = _mm256_and_si256(_mm256_add_epi32(row, all(1)), _mm256_cmpgt_epi32(length, row));
    const __m256i across = weights_of(_mm256_srli_epi32(_mm256_sub_epi32(at_b, _mm256_slli_epi32(column, 16)), 8));
    const __m256i along = _mm256_srli_epi32(_mm256_and_si256(at_t, all(0xffff)), 8);
    const __m256i here = _mm256_add_epi32(_mm256_mullo_epi32(row, width), column);
    const __m256i after = _mm256_add_epi32(_mm256_mullo_epi32(next, width), column);
    const __m256i near = _mm256_madd_epi16(gather_pairs(corrections, here), across);
    const __m256i far = _mm256_madd_epi16(gather_pairs(corrections, after), across);
    const __m256i sum =
        _mm256_add_epi32(_mm256_mullo_epi32(near, _mm256_sub_epi32(all(256), along)), _mm256_mullo_epi32(far, along));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i), _mm256_srai_epi32(_mm256_add_epi32(sum, all(32768)), 16));
  }
  kLookUpCorrections.scalar(corrections, shape, t + i, b + i, out + i, count - i);
}

}  // namespace biseam::ring

#endif
