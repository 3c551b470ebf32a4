#include "frame/blend/expand_row.hpp"

#if defined(BISEAM_X86_64)

#include "base/intrinsics.hpp"

namespace biseam {

// Two pixels, six samples, at a time.
BISEAM_AVX2 void expand_pixels_avx2(const int32_t* src, int32_t* row, ptrdiff_t pixels) noexcept {
  const __m256i on_lanes = _mm256_setr_epi32(0, 1, 2, 0, 0, 0, 3, 4), on_rest = _mm256_setr_epi32(5, 0, 0, 0, 0, 0, 0, 0);
  const __m256i between_lanes = _mm256_setr_epi32(0, 0, 0, 0, 1, 2, 0, 0),
                between_rest = _mm256_setr_epi32(0, 3, 4, 5, 0, 0, 0, 0);
  ptrdiff_t i = 0;
  // Eight samples are read behind the first pixel's neighbours.
  for (; i + 3 <= pixels; i += 2) {
    const int32_t* s = src + 3 * i;
    int32_t* out = row + 6 * i;
    const __m256i before = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s - 3));
    const __m256i middle = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s));
    const __m256i after = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + 3));
    const __m256i between = _mm256_slli_epi32(_mm256_add_epi32(middle, after), 2);
    const __m256i six = _mm256_slli_epi32(_mm256_add_epi32(middle, _mm256_slli_epi32(middle, 1)), 1);
    const __m256i on = _mm256_add_epi32(_mm256_add_epi32(before, after), six);
    const __m256i first = _mm256_blend_epi32(_mm256_permutevar8x32_epi32(on, on_lanes),
                                             _mm256_permutevar8x32_epi32(between, between_lanes), 0b00111000);
    const __m256i rest = _mm256_blend_epi32(_mm256_permutevar8x32_epi32(on, on_rest),
                                            _mm256_permutevar8x32_epi32(between, between_rest), 0b00001110);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), first);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 8), _mm256_castsi256_si128(rest));
  }
  expand_pixels_scalar(src + 3 * i, row + 6 * i, pixels - i);
}

}  // namespace biseam

#endif
