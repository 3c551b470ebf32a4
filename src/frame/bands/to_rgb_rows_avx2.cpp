#include "frame/bands/to_rgb_rows.hpp"

#if defined(BISEAM_X86_64)

#include "base/intrinsics.hpp"
#include "frame/bands/integer_formulas.hpp"

namespace biseam {

namespace {

constexpr int kPairs = 8;  // a block

// What the chroma of eight pairs adds to luma and kOffsetBias: 16 bits for each of sixteen pixels.
struct Offsets {
  __m256i red, green, blue;
};

BISEAM_AVX2 inline __m256i dot(__m256i uv, int16_t u_factor, int16_t v_factor) noexcept {
  const uint32_t factors = static_cast<uint16_t>(u_factor) | static_cast<uint32_t>(static_cast<uint16_t>(v_factor)) << 16;
  return _mm256_madd_epi16(uv, _mm256_set1_epi32(static_cast<int>(factors)));
}

// Divides by kOffsetScale; each quotient comes twice, for both pixels of its pair.
BISEAM_AVX2 inline __m256i offsets_of(__m256i ten_thousandths) noexcept {
  const __m256i biased = _mm256_add_epi32(ten_thousandths, _mm256_set1_epi32(kOffsetRounding));
  const __m256i quotient = _mm256_cvttps_epi32(_mm256_mul_ps(_mm256_cvtepi32_ps(biased), _mm256_set1_ps(kPerOffsetScale)));
  return _mm256_or_si256(quotient, _mm256_slli_epi32(quotient, 16));
}

BISEAM_AVX2 inline Offsets load_offsets(const uint8_t* chroma) noexcept {
  const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(chroma));
  const __m256i uv = _mm256_sub_epi16(_mm256_cvtepu8_epi16(bytes), _mm256_set1_epi16(128));
  return {offsets_of(dot(uv, 0, kRedOfV)), offsets_of(dot(uv, kGreenOfU, kGreenOfV)), offsets_of(dot(uv, kBlueOfU, 0))};
}

// Interleaved bytes of sixteen pixels: of each half (eight pixels) the first 16 bytes and, in the lower part, the last 8.
struct Interleaved {
  __m256i first, last;
};

BISEAM_AVX2 inline __m256i in_both_lanes(__m128i order) noexcept { return _mm256_broadcastsi128_si256(order); }

BISEAM_AVX2 inline Interleaved convert_pixels(const uint8_t* luma, const Offsets& offsets) noexcept {
  const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(luma));
  const __m256i y = _mm256_sub_epi16(_mm256_cvtepu8_epi16(bytes), _mm256_set1_epi16(kOffsetBias));
  // Each lane: eight red bytes, eight green ones; eight blue ones twice.
  const __m256i rg = _mm256_packus_epi16(_mm256_add_epi16(y, offsets.red), _mm256_add_epi16(y, offsets.green));
  const __m256i blue = _mm256_add_epi16(y, offsets.blue);
  const __m256i b = _mm256_packus_epi16(blue, blue);
  const __m256i rg_first = in_both_lanes(_mm_setr_epi8(0, 8, -1, 1, 9, -1, 2, 10, -1, 3, 11, -1, 4, 12, -1, 5));
  const __m256i b_first = in_both_lanes(_mm_setr_epi8(-1, -1, 0, -1, -1, 1, -1, -1, 2, -1, -1, 3, -1, -1, 4, -1));
  const __m256i rg_last = in_both_lanes(_mm_setr_epi8(13, -1, 6, 14, -1, 7, 15, -1, -1, -1, -1, -1, -1, -1, -1, -1));
  const __m256i b_last = in_both_lanes(_mm_setr_epi8(-1, 5, -1, -1, 6, -1, -1, 7, -1, -1, -1, -1, -1, -1, -1, -1));
  return {_mm256_or_si256(_mm256_shuffle_epi8(rg, rg_first), _mm256_shuffle_epi8(b, b_first)),
          _mm256_or_si256(_mm256_shuffle_epi8(rg, rg_last), _mm256_shuffle_epi8(b, b_last))};
}

BISEAM_AVX2 inline void store_half(uint8_t* samples, __m128i first, __m128i last) noexcept {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(samples), first);
  _mm_storel_epi64(reinterpret_cast<__m128i*>(samples + 16), last);
}

BISEAM_AVX2 inline void convert_row(const uint8_t* luma, const Offsets& offsets, uint8_t* rgb) noexcept {
  const Interleaved pixels = convert_pixels(luma, offsets);
  store_half(rgb, _mm256_castsi256_si128(pixels.first), _mm256_castsi256_si128(pixels.last));
  store_half(rgb + 24, _mm256_extracti128_si256(pixels.first, 1), _mm256_extracti128_si256(pixels.last, 1));
}

}  // namespace

BISEAM_AVX2 void yuv420_rows_to_rgb_avx2(const uint8_t* luma0, const uint8_t* luma1, const uint8_t* chroma, uint8_t* rgb0,
                                         uint8_t* rgb1, int pairs) noexcept {
  if (pairs < kPairs) return yuv420_rows_to_rgb_scalar(luma0, luma1, chroma, rgb0, rgb1, pairs);
  // The last block goes back to where it is whole.
  for (int next = 0; next < pairs; next += kPairs) {
    const int i = next + kPairs <= pairs ? next : pairs - kPairs;
    const Offsets offsets = load_offsets(chroma + 2 * i);
    convert_row(luma0 + 2 * i, offsets, rgb0 + 6 * i);
    convert_row(luma1 + 2 * i, offsets, rgb1 + 6 * i);
  }
}

BISEAM_AVX2 void yuv422_row_to_rgb_avx2(const uint8_t* luma, const uint8_t* chroma, uint8_t* rgb, int pairs) noexcept {
  if (pairs < kPairs) return yuv422_row_to_rgb_scalar(luma, chroma, rgb, pairs);
  for (int next = 0; next < pairs; next += kPairs) {
    const int i = next + kPairs <= pairs ? next : pairs - kPairs;
    convert_row(luma + 2 * i, load_offsets(chroma + 2 * i), rgb + 6 * i);
  }
}

}  // namespace biseam

#endif
