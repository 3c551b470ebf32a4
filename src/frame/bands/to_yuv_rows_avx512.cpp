#include "frame/bands/to_yuv_rows.hpp"

#if defined(BISEAM_X86_64)

#include "base/intrinsics.hpp"
#include "frame/bands/integer_formulas.hpp"

namespace biseam {

namespace {

constexpr int kPixels = 16;  // a block of luma
constexpr int kPairs = 8;    // a block of chroma

// Where the samples of sixteen pixels lie in two vectors of 16-bit numbers, packed from three of 32-bit ones: for each pixel
// red and green; blue and, to be multiplied by zero, blue again.
struct alignas(64) PixelOrder {
  uint16_t red_green[32] = {}, blue[32] = {};

  constexpr PixelOrder() {
    for (int pixel = 0; pixel < 16; ++pixel) {
      red_green[2 * pixel] = place(3 * pixel);
      red_green[2 * pixel + 1] = place(3 * pixel + 1);
      blue[2 * pixel] = blue[2 * pixel + 1] = place(3 * pixel + 2);
    }
  }
  static constexpr uint16_t place(int sample) {
    const int vector = sample / 16, lane = sample % 16 / 4;
    return static_cast<uint16_t>(vector / 2 * 32 + lane * 8 + vector % 2 * 4 + sample % 4);
  }
};
constexpr PixelOrder kPixelOrder;

// The left and right pixel of four pairs, each with a fourth number that counts for nothing.
struct alignas(64) PairOrder {
  int32_t left[16] = {}, right[16] = {};

  constexpr PairOrder() {
    for (int i = 0; i < 16; ++i) {
      const int channel = i % 4 < 3 ? i % 4 : 2;
      left[i] = 6 * (i / 4) + channel;
      right[i] = left[i] + 3;
    }
  }
};
constexpr PairOrder kPairOrder;

BISEAM_AVX512 inline __m512i load(const int32_t* samples) noexcept { return _mm512_loadu_si512(samples); }

BISEAM_AVX512 inline __m512i load_half(const int32_t* samples) noexcept {
  return _mm512_castsi256_si512(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(samples)));
}

// Has bits above those of kWholeLimit where a sample does not fit 16 bits without its fractional bits.
BISEAM_AVX512 inline __m512i raised(__m512i samples) noexcept {
  return _mm512_add_epi32(samples, _mm512_set1_epi32(kWholeLimit));
}

BISEAM_AVX512 inline bool any_excess(__m512i raised_samples) noexcept {
  return _mm512_test_epi32_mask(raised_samples, _mm512_set1_epi32(~(2 * kWholeLimit - 1))) != 0;
}

BISEAM_AVX512 inline __m512i whole(__m512i a, __m512i b) noexcept {
  return _mm512_packs_epi32(_mm512_srai_epi32(a, kFractionBits), _mm512_srai_epi32(b, kFractionBits));
}

BISEAM_AVX512 inline __m512i factors(int16_t even, int16_t odd) noexcept {
  return _mm512_set1_epi32(
      static_cast<int>(static_cast<uint16_t>(even) | static_cast<uint32_t>(static_cast<uint16_t>(odd)) << 16));
}

BISEAM_AVX512 inline void luma_block(const int32_t* rgb, uint8_t* luma) noexcept {
  const __m512i a = load(rgb), b = load(rgb + 16), c = load(rgb + 32);
  if (any_excess(_mm512_or_si512(_mm512_or_si512(raised(a), raised(b)), raised(c)))) {
    return rgb_row_to_luma_scalar(rgb, luma, kPixels);
  }
  const __m512i front = whole(a, b), back = whole(c, c);
  const __m512i red_green = _mm512_permutex2var_epi16(front, _mm512_load_si512(kPixelOrder.red_green), back);
  const __m512i blue = _mm512_permutex2var_epi16(front, _mm512_load_si512(kPixelOrder.blue), back);
  const __m512i sums = _mm512_add_epi32(_mm512_madd_epi16(red_green, factors(kLumaOfRed, kLumaOfGreen)),
                                        _mm512_madd_epi16(blue, factors(kLumaOfBlue, 0)));
  const __m512i eased = _mm512_srai_epi32(_mm512_add_epi32(sums, _mm512_set1_epi32(kLumaRounding)), kLumaEase);
  const __m512i inside = _mm512_min_epi32(_mm512_max_epi32(eased, _mm512_setzero_si512()), _mm512_set1_epi32(UINT16_MAX));
  const __m512i products = _mm512_mulhi_epu16(inside, _mm512_set1_epi32(kLumaReciprocal));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(luma), _mm512_cvtusepi32_epi8(_mm512_srli_epi32(products, kLumaShift)));
}

// The sum of each pair of pixels: four pairs, 24 samples in two vectors.
BISEAM_AVX512 inline __m512i pair_sums(__m512i first, __m512i last) noexcept {
  return _mm512_add_epi32(_mm512_permutex2var_epi32(first, _mm512_load_si512(kPairOrder.left), last),
                          _mm512_permutex2var_epi32(first, _mm512_load_si512(kPairOrder.right), last));
}

BISEAM_AVX512 inline __m512i sums_of_two(const int32_t* rgb) noexcept { return pair_sums(load(rgb), load_half(rgb + 16)); }

BISEAM_AVX512 inline __m512i sums_of_four(const int32_t* rgb0, const int32_t* rgb1) noexcept {
  return pair_sums(_mm512_add_epi32(load(rgb0), load(rgb1)), _mm512_add_epi32(load_half(rgb0 + 16), load_half(rgb1 + 16)));
}

BISEAM_AVX512 inline __m512i dot(__m512i wholes, int16_t red, int16_t green, int16_t blue) noexcept {
  const uint64_t words =
      static_cast<uint16_t>(red) | uint64_t{static_cast<uint16_t>(green)} << 16 | uint64_t{static_cast<uint16_t>(blue)} << 32;
  return _mm512_madd_epi16(wholes, _mm512_set1_epi64(static_cast<int64_t>(words)));
}

// From the sums of two times four pairs.  False, and nothing is written, where they are too large.
template <int weight>
BISEAM_AVX512 inline bool chroma_block(__m512i a, __m512i b, uint8_t* chroma) noexcept {
  if (any_excess(_mm512_or_si512(raised(a), raised(b)))) return false;
  const __m512i wholes = whole(a, b);
  const __m512 u = _mm512_castsi512_ps(dot(wholes, weight * kUOfRed, weight * kUOfGreen, weight * kUOfBlue));
  const __m512 v = _mm512_castsi512_ps(dot(wholes, weight * kVOfRed, weight * kVOfGreen, weight * kVOfBlue));
  // In each lane: u of a pair in a and of one in b, v of both.
  const __m512i sums =
      _mm512_add_epi32(_mm512_castps_si512(_mm512_shuffle_ps(u, v, 0x88)), _mm512_castps_si512(_mm512_shuffle_ps(u, v, 0xdd)));
  const __m512i eased = _mm512_srai_epi32(_mm512_add_epi32(sums, _mm512_set1_epi32(kChromaRounding)), kChromaEase);
  const __m512i quotients = _mm512_cvttps_epi32(_mm512_mul_ps(_mm512_cvtepi32_ps(eased), _mm512_set1_ps(kPerChromaScale)));
  const __m128i bytes = _mm512_cvtusepi32_epi8(_mm512_max_epi32(quotients, _mm512_setzero_si512()));
  const __m128i order = _mm_setr_epi8(0, 2, 4, 6, 8, 10, 12, 14, 1, 3, 5, 7, 9, 11, 13, 15);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(chroma), _mm_shuffle_epi8(bytes, order));
  return true;
}

}  // namespace

BISEAM_AVX512 void rgb_row_to_luma_avx512(const int32_t* rgb, uint8_t* luma, int count) noexcept {
  if (count < kPixels) return rgb_row_to_luma_scalar(rgb, luma, count);
  // The last block goes back to where it is whole.
  for (int next = 0; next < count; next += kPixels) {
    const int i = next + kPixels <= count ? next : count - kPixels;
    luma_block(rgb + 3 * i, luma + i);
  }
}

BISEAM_AVX512 void rgb_rows_to_chroma420_avx512(const int32_t* rgb0, const int32_t* rgb1, uint8_t* chroma, int pairs) noexcept {
  if (pairs < kPairs) return rgb_rows_to_chroma420_scalar(rgb0, rgb1, chroma, pairs);
  for (int next = 0; next < pairs; next += kPairs) {
    const int i = next + kPairs <= pairs ? next : pairs - kPairs;
    const int32_t *p0 = rgb0 + 6 * i, *p1 = rgb1 + 6 * i;
    uint8_t* out = chroma + 2 * i;
    if (!chroma_block<1>(sums_of_four(p0, p1), sums_of_four(p0 + 24, p1 + 24), out)) {
      rgb_rows_to_chroma420_scalar(p0, p1, out, kPairs);
    }
  }
}

BISEAM_AVX512 void rgb_row_to_chroma422_avx512(const int32_t* rgb, uint8_t* chroma, int pairs) noexcept {
  if (pairs < kPairs) return rgb_row_to_chroma422_scalar(rgb, chroma, pairs);
  for (int next = 0; next < pairs; next += kPairs) {
    const int i = next + kPairs <= pairs ? next : pairs - kPairs;
    const int32_t* p = rgb + 6 * i;
    uint8_t* out = chroma + 2 * i;
    if (!chroma_block<2>(sums_of_two(p), sums_of_two(p + 24), out)) rgb_row_to_chroma422_scalar(p, out, kPairs);
  }
}

}  // namespace biseam

#endif
