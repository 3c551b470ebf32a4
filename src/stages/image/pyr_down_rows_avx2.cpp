#include "base/isa.hpp"

#if defined(BISEAM_X86_64)

#include <immintrin.h>

#include "stages/image/pyr_down_kernels.hpp"

namespace biseam {

namespace {

// The pixel at src and the one two pixels on, one in each half; the fourth lane of a half is the sample that follows.
BISEAM_AVX2 inline __m256i load_pair(const int32_t* src) {
  const __m128i first = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src));
  const __m128i second = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 6));
  return _mm256_inserti128_si256(_mm256_castsi128_si256(first), second, 1);
}

// The second pixel of one pair and the first of the next.
BISEAM_AVX2 inline __m256i between_pairs(__m256i pair, __m256i next) { return _mm256_permute2x128_si256(pair, next, 0x21); }

BISEAM_AVX2 inline __m256i sum_of(__m256i outer, __m256i inner, __m256i middle) {
  const __m256i by_four = _mm256_slli_epi32(_mm256_add_epi32(inner, middle), 2);
  return _mm256_add_epi32(_mm256_add_epi32(outer, by_four), _mm256_slli_epi32(middle, 1));
}

// Two pixels at a time; every source pixel is loaded once.
template <bool rounded>
BISEAM_AVX2 inline ptrdiff_t reduce_pairs(const int32_t* src, int32_t* row, ptrdiff_t pixels) {
  // Six samples of two pixels, then two strays that the next store replaces.
  const __m256i packed = _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7);
  if (pixels < 4) return 0;
  ptrdiff_t x = 0;
  __m256i even = load_pair(src), before = load_pair(src - 6);
  __m256i odd_before = _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(src - 3)));
  for (; x + 4 <= pixels; x += 2) {
    const int32_t* s = src + 6 * x;
    const __m256i next = load_pair(s + 12), odd = load_pair(s + 3);
    const __m256i after = between_pairs(even, next);
    const __m256i outer = _mm256_add_epi32(before, after);
    const __m256i inner = _mm256_add_epi32(between_pairs(odd_before, odd), odd);
    __m256i sum = sum_of(outer, inner, even);
    if constexpr (rounded) sum = _mm256_srai_epi32(_mm256_add_epi32(sum, _mm256_set1_epi32(128)), 8);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(row + 3 * x), _mm256_permutevar8x32_epi32(sum, packed));
    before = after;
    even = next;
    odd_before = odd;
  }
  return x;
}

}  // namespace

BISEAM_AVX2 void reduce_pixels_avx2(const int32_t* src, int32_t* row, ptrdiff_t pixels) noexcept {
  const ptrdiff_t done = reduce_pairs<false>(src, row, pixels);
  kReducePixels.scalar(src + 6 * done, row + 3 * done, pixels - done);
}

BISEAM_AVX2 void reduce_pixels_rounded_avx2(const int32_t* src, int32_t* row, ptrdiff_t pixels) noexcept {
  const ptrdiff_t done = reduce_pairs<true>(src, row, pixels);
  kReducePixelsRounded.scalar(src + 6 * done, row + 3 * done, pixels - done);
}

}  // namespace biseam

#endif
