#include "frame/bands/to_yuv_rows.hpp"

#if defined(BISEAM_X86_64)

#include "base/intrinsics.hpp"
#include "frame/bands/integer_formulas.hpp"

namespace biseam {

namespace {

constexpr int kPixels = 16;  // a block of luma
constexpr int kPairs = 8;    // a block of chroma

// Twelve samples in each lane: four pixels, three vectors.
struct Samples {
  __m256i first, middle, last;
};

// A pixel's red, green and blue and a fourth number that counts for nothing, in each lane; the same of the three pixels that
// follow.
struct Pixels {
  __m256i first, second, third, fourth;
};

BISEAM_AVX2 inline __m256i load_two(const int32_t* lower, const int32_t* upper) noexcept {
  const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(lower));
  return _mm256_inserti128_si256(_mm256_castsi128_si256(low), _mm_loadu_si128(reinterpret_cast<const __m128i*>(upper)), 1);
}

// The upper lane's pixels are those 8 behind the lower one's.
BISEAM_AVX2 inline Samples load(const int32_t* rgb) noexcept {
  return {load_two(rgb, rgb + 24), load_two(rgb + 4, rgb + 28), load_two(rgb + 8, rgb + 32)};
}

BISEAM_AVX2 inline Samples load_sum(const int32_t* rgb0, const int32_t* rgb1) noexcept {
  const Samples a = load(rgb0), b = load(rgb1);
  return {_mm256_add_epi32(a.first, b.first), _mm256_add_epi32(a.middle, b.middle), _mm256_add_epi32(a.last, b.last)};
}

BISEAM_AVX2 inline Pixels split(const Samples& s) noexcept {
  return {s.first, _mm256_alignr_epi8(s.middle, s.first, 12), _mm256_alignr_epi8(s.last, s.middle, 8),
          _mm256_srli_si256(s.last, 4)};
}

BISEAM_AVX2 inline __m256i factors(int16_t red, int16_t green, int16_t blue) noexcept {
  return _mm256_setr_epi16(red, green, blue, 0, red, green, blue, 0, red, green, blue, 0, red, green, blue, 0);
}

// Zero where all of a and b fit 16 bits once the fractional bits are gone.
BISEAM_AVX2 inline __m256i excess(__m256i a, __m256i b) noexcept {
  const __m256i low = _mm256_set1_epi32(kWholeLimit);
  const __m256i mask = _mm256_set1_epi32(~(2 * kWholeLimit - 1));
  return _mm256_and_si256(_mm256_or_si256(_mm256_add_epi32(a, low), _mm256_add_epi32(b, low)), mask);
}

BISEAM_AVX2 inline __m256i whole(__m256i a, __m256i b) noexcept {
  return _mm256_packs_epi32(_mm256_srai_epi32(a, kFractionBits), _mm256_srai_epi32(b, kFractionBits));
}

// Eighths of the luma scale, rounding included, of four pixels in each lane.
BISEAM_AVX2 inline __m256i luma_sums(const Samples& samples) noexcept {
  const Samples whole_samples = {_mm256_srai_epi32(samples.first, kFractionBits),
                                 _mm256_srai_epi32(samples.middle, kFractionBits),
                                 _mm256_srai_epi32(samples.last, kFractionBits)};
  const Pixels p = split(whole_samples);
  const __m256i weights = factors(kLumaOfRed, kLumaOfGreen, kLumaOfBlue);
  const __m256i front = _mm256_madd_epi16(_mm256_packs_epi32(p.first, p.second), weights);
  const __m256i back = _mm256_madd_epi16(_mm256_packs_epi32(p.third, p.fourth), weights);
  const __m256i sums = _mm256_hadd_epi32(front, back);
  return _mm256_srai_epi32(_mm256_add_epi32(sums, _mm256_set1_epi32(kLumaRounding)), kLumaEase);
}

BISEAM_AVX2 inline void luma_block(const int32_t* rgb, uint8_t* luma) noexcept {
  const Samples a = load(rgb), b = load(rgb + 12);
  const __m256i beyond =
      _mm256_or_si256(_mm256_or_si256(excess(a.first, a.middle), excess(a.last, b.first)), excess(b.middle, b.last));
  if (!_mm256_testz_si256(beyond, beyond)) return rgb_row_to_luma_scalar(rgb, luma, kPixels);
  const __m256i sums = _mm256_packus_epi32(luma_sums(a), luma_sums(b));
  const __m256i quotients =
      _mm256_srli_epi16(_mm256_mulhi_epu16(sums, _mm256_set1_epi16(static_cast<int16_t>(kLumaReciprocal))), kLumaShift);
  const __m128i bytes = _mm_packus_epi16(_mm256_castsi256_si128(quotients), _mm256_extracti128_si256(quotients, 1));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(luma), bytes);
}

// Divides by the chroma scale.  In each lane the u of two pairs, then their v.
BISEAM_AVX2 inline __m256i chroma_quotients(__m256i wholes, __m256i u_factors, __m256i v_factors) noexcept {
  const __m256i sums = _mm256_hadd_epi32(_mm256_madd_epi16(wholes, u_factors), _mm256_madd_epi16(wholes, v_factors));
  const __m256i eased = _mm256_srai_epi32(_mm256_add_epi32(sums, _mm256_set1_epi32(kChromaRounding)), kChromaEase);
  return _mm256_cvttps_epi32(_mm256_mul_ps(_mm256_cvtepi32_ps(eased), _mm256_set1_ps(kPerChromaScale)));
}

// From the pixel sums of eight pairs; pixels still side by side.  False, and nothing is written, where they are too large.
template <int weight>
BISEAM_AVX2 inline bool chroma_block(const Samples& samples_a, const Samples& samples_b, uint8_t* chroma) noexcept {
  const Pixels p = split(samples_a), q = split(samples_b);
  const __m256i a0 = _mm256_add_epi32(p.first, p.second), a1 = _mm256_add_epi32(p.third, p.fourth);
  const __m256i b0 = _mm256_add_epi32(q.first, q.second), b1 = _mm256_add_epi32(q.third, q.fourth);
  const __m256i beyond = _mm256_or_si256(excess(a0, a1), excess(b0, b1));
  if (!_mm256_testz_si256(beyond, _mm256_setr_epi32(-1, -1, -1, 0, -1, -1, -1, 0))) return false;
  const __m256i u = factors(weight * kUOfRed, weight * kUOfGreen, weight * kUOfBlue);
  const __m256i v = factors(weight * kVOfRed, weight * kVOfGreen, weight * kVOfBlue);
  const __m256i words = _mm256_packs_epi32(chroma_quotients(whole(a0, a1), u, v), chroma_quotients(whole(b0, b1), u, v));
  const __m256i order = _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 2, 1, 3, 4, 6, 5, 7, 0, 2, 1, 3, 4, 6, 5, 7));
  const __m256i bytes = _mm256_shuffle_epi8(_mm256_packus_epi16(words, words), order);
  const __m128i both = _mm_unpacklo_epi64(_mm256_castsi256_si128(bytes), _mm256_extracti128_si256(bytes, 1));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(chroma), both);
  return true;
}

}  // namespace

BISEAM_AVX2 void rgb_row_to_luma_avx2(const int32_t* rgb, uint8_t* luma, int count) noexcept {
  if (count < kPixels) return rgb_row_to_luma_scalar(rgb, luma, count);
  // The last block goes back to where it is whole.
  for (int next = 0; next < count; next += kPixels) {
    const int i = next + kPixels <= count ? next : count - kPixels;
    luma_block(rgb + 3 * i, luma + i);
  }
}

BISEAM_AVX2 void rgb_rows_to_chroma420_avx2(const int32_t* rgb0, const int32_t* rgb1, uint8_t* chroma, int pairs) noexcept {
  if (pairs < kPairs) return rgb_rows_to_chroma420_scalar(rgb0, rgb1, chroma, pairs);
  for (int next = 0; next < pairs; next += kPairs) {
    const int i = next + kPairs <= pairs ? next : pairs - kPairs;
    const int32_t *p0 = rgb0 + 6 * i, *p1 = rgb1 + 6 * i;
    uint8_t* out = chroma + 2 * i;
    if (!chroma_block<1>(load_sum(p0, p1), load_sum(p0 + 12, p1 + 12), out)) {
      rgb_rows_to_chroma420_scalar(p0, p1, out, kPairs);
    }
  }
}

BISEAM_AVX2 void rgb_row_to_chroma422_avx2(const int32_t* rgb, uint8_t* chroma, int pairs) noexcept {
  if (pairs < kPairs) return rgb_row_to_chroma422_scalar(rgb, chroma, pairs);
  for (int next = 0; next < pairs; next += kPairs) {
    const int i = next + kPairs <= pairs ? next : pairs - kPairs;
    const int32_t* p = rgb + 6 * i;
    uint8_t* out = chroma + 2 * i;
    if (!chroma_block<2>(load(p), load(p + 12), out)) rgb_row_to_chroma422_scalar(p, out, kPairs);
  }
}

}  // namespace biseam

#endif
