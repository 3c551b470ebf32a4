#include "frame/blend/byte_rows.hpp"

#if defined(BISEAM_X86_64)

#include "base/intrinsics.hpp"

namespace biseam {

namespace {

BISEAM_AVX2 inline __m256i load(const uint16_t* s) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s)); }

// Samples 0 .. 7 and 6 .. 13 in one half each, two pixels and two strays.
BISEAM_AVX2 inline __m256i load_pixels(const uint8_t* s) {
  const __m128i halves = _mm_setr_epi8(0, 1, 2, 3, 4, 5, 6, 7, 6, 7, 8, 9, 10, 11, 12, 13);
  return _mm256_cvtepu8_epi16(_mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(s)), halves));
}

}  // namespace

// Three pixels at a time: all sums of 16 samples, of which every second pixel is wanted.
BISEAM_AVX2 void reduce_byte_pixels_avx2(const uint16_t* sums, uint8_t* row, ptrdiff_t pixels) noexcept {
  const __m128i second_pixels = _mm_setr_epi8(0, 1, 2, 6, 7, 8, 12, 13, 14, -1, -1, -1, -1, -1, -1, -1);
  const __m256i half = _mm256_set1_epi16(128);
  ptrdiff_t x = 0;
  // Sixteen bytes are stored, of which the pixels that follow replace seven.
  for (; x + 6 <= pixels; x += 3) {
    const uint16_t* s = sums + 6 * x;
    const __m256i outer = _mm256_add_epi16(load(s - 6), load(s + 6));
    const __m256i inner = _mm256_add_epi16(load(s - 3), load(s + 3));
    const __m256i middle = load(s);
    const __m256i by_four = _mm256_slli_epi16(_mm256_add_epi16(inner, middle), 2);
    const __m256i by_two = _mm256_add_epi16(_mm256_add_epi16(middle, middle), half);
    const __m256i sum = _mm256_srli_epi16(_mm256_add_epi16(_mm256_add_epi16(outer, by_two), by_four), 8);
    const __m128i bytes = _mm_packus_epi16(_mm256_castsi256_si128(sum), _mm256_extracti128_si256(sum, 1));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(row + 3 * x), _mm_shuffle_epi8(bytes, second_pixels));
  }
  reduce_byte_pixels_scalar(sums + 6 * x, row + 3 * x, pixels - x);
}

// Four pixels at a time, two in each half.
BISEAM_AVX2 void expand_byte_pixels_avx2(const uint8_t* src, uint16_t* row, ptrdiff_t pixels) noexcept {
  // Of a half's twelve results the first eight, then four.
  const __m256i on_first = _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 1, 2, 3, 4, 5, -1, -1, -1, -1, -1, -1, 6, 7, 8, 9));
  const __m256i between_first =
      _mm256_broadcastsi128_si256(_mm_setr_epi8(-1, -1, -1, -1, -1, -1, 0, 1, 2, 3, 4, 5, -1, -1, -1, -1));
  const __m256i on_last =
      _mm256_broadcastsi128_si256(_mm_setr_epi8(10, 11, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1));
  const __m256i between_last =
      _mm256_broadcastsi128_si256(_mm_setr_epi8(-1, -1, 6, 7, 8, 9, 10, 11, -1, -1, -1, -1, -1, -1, -1, -1));
  ptrdiff_t i = 0;
  // Sixteen samples are read from each pixel that neighbours the first.
  for (; i + 6 <= pixels; i += 4) {
    const uint8_t* s = src + 3 * i;
    uint16_t* out = row + 6 * i;
    const __m256i before = load_pixels(s - 3), middle = load_pixels(s), after = load_pixels(s + 3);
    const __m256i between = _mm256_slli_epi16(_mm256_add_epi16(middle, after), 2);
    const __m256i by_two = _mm256_add_epi16(middle, middle);
    const __m256i on =
        _mm256_add_epi16(_mm256_add_epi16(before, after), _mm256_add_epi16(by_two, _mm256_slli_epi16(by_two, 1)));
    const __m256i first = _mm256_or_si256(_mm256_shuffle_epi8(on, on_first), _mm256_shuffle_epi8(between, between_first));
    const __m256i last = _mm256_or_si256(_mm256_shuffle_epi8(on, on_last), _mm256_shuffle_epi8(between, between_last));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm256_castsi256_si128(first));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out + 8), _mm256_castsi256_si128(last));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 12), _mm256_extracti128_si256(first, 1));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out + 20), _mm256_extracti128_si256(last, 1));
  }
  expand_byte_pixels_scalar(src + 3 * i, row + 6 * i, pixels - i);
}

}  // namespace biseam

#endif
