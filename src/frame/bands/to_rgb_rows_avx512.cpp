#include "frame/bands/to_rgb_rows.hpp"

#if defined(BISEAM_X86_64)

#include "base/intrinsics.hpp"
#include "frame/bands/integer_formulas.hpp"

namespace biseam {

namespace {

constexpr int kPairs = 16;  // a block

// What the chroma of sixteen pairs adds to luma and kOffsetBias: 16 bits for each of 32 pixels.
struct Offsets {
  __m512i red, green, blue;
};

BISEAM_AVX512 inline __m512i dot(__m512i uv, int16_t u_factor, int16_t v_factor) noexcept {
  const uint32_t factors = static_cast<uint16_t>(u_factor) | static_cast<uint32_t>(static_cast<uint16_t>(v_factor)) << 16;
  return _mm512_madd_epi16(uv, _mm512_set1_epi32(static_cast<int>(factors)));
}

// Divides by kOffsetScale; each quotient comes twice, for both pixels of its pair.
BISEAM_AVX512 inline __m512i offsets_of(__m512i ten_thousandths) noexcept {
  const __m512i biased = _mm512_add_epi32(ten_thousandths, _mm512_set1_epi32(kOffsetRounding));
  const __m512i quotient = _mm512_cvttps_epi32(_mm512_mul_ps(_mm512_cvtepi32_ps(biased), _mm512_set1_ps(kPerOffsetScale)));
  return _mm512_or_si512(quotient, _mm512_slli_epi32(quotient, 16));
}

BISEAM_AVX512 inline __m512i widen(const uint8_t* bytes, int less) noexcept {
  const __m256i loaded = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes));
  return _mm512_sub_epi16(_mm512_cvtepu8_epi16(loaded), _mm512_set1_epi16(static_cast<int16_t>(less)));
}

BISEAM_AVX512 inline Offsets load_offsets(const uint8_t* chroma) noexcept {
  const __m512i uv = widen(chroma, 128);
  return {offsets_of(dot(uv, 0, kRedOfV)), offsets_of(dot(uv, kGreenOfU, kGreenOfV)), offsets_of(dot(uv, kBlueOfU, 0))};
}

// Where the 96 interleaved bytes of a block lie in the packed vectors: each group of 16 bytes holds eight red ones and eight
// green ones, and from 64 on eight blue ones and eight to leave.
struct alignas(64) Order {
  uint8_t bytes[128] = {};

  constexpr Order() {
    for (int i = 0; i < 96; ++i) {
      const int pixel = i / 3, channel = i % 3;
      bytes[i] = static_cast<uint8_t>(pixel / 8 * 16 + pixel % 8 + (channel == 1 ? 8 : channel == 2 ? 64 : 0));
    }
  }
};
constexpr Order kOrder;

BISEAM_AVX512 inline __m512i order_at(const uint8_t* order) noexcept { return _mm512_load_si512(order); }

BISEAM_AVX512 inline void store_pixels(uint8_t* rgb, __m512i red_green, __m512i blue) noexcept {
  _mm512_storeu_si512(rgb, _mm512_permutex2var_epi8(red_green, order_at(kOrder.bytes), blue));
  const __m512i last = _mm512_permutex2var_epi8(red_green, order_at(kOrder.bytes + 64), blue);
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(rgb + 64), _mm512_castsi512_si256(last));
}

BISEAM_AVX512 inline void convert_row(const uint8_t* luma, const Offsets& offsets, uint8_t* rgb) noexcept {
  const __m512i y = widen(luma, kOffsetBias);
  const __m512i blue = _mm512_add_epi16(y, offsets.blue);
  store_pixels(rgb, _mm512_packus_epi16(_mm512_add_epi16(y, offsets.red), _mm512_add_epi16(y, offsets.green)),
               _mm512_packus_epi16(blue, blue));
}

}  // namespace

BISEAM_AVX512 void yuv420_rows_to_rgb_avx512(const uint8_t* luma0, const uint8_t* luma1, const uint8_t* chroma, uint8_t* rgb0,
                                             uint8_t* rgb1, int pairs) noexcept {
  if (pairs < kPairs) return yuv420_rows_to_rgb_avx2(luma0, luma1, chroma, rgb0, rgb1, pairs);
  // The last block goes back to where it is whole.
  for (int next = 0; next < pairs; next += kPairs) {
    const int i = next + kPairs <= pairs ? next : pairs - kPairs;
    const Offsets offsets = load_offsets(chroma + 2 * i);
    convert_row(luma0 + 2 * i, offsets, rgb0 + 6 * i);
    convert_row(luma1 + 2 * i, offsets, rgb1 + 6 * i);
  }
}

BISEAM_AVX512 void yuv422_row_to_rgb_avx512(const uint8_t* luma, const uint8_t* chroma, uint8_t* rgb, int pairs) noexcept {
  if (pairs < kPairs) return yuv422_row_to_rgb_avx2(luma, chroma, rgb, pairs);
  for (int next = 0; next < pairs; next += kPairs) {
    const int i = next + kPairs <= pairs ? next : pairs - kPairs;
    convert_row(luma + 2 * i, load_offsets(chroma + 2 * i), rgb + 6 * i);
  }
}

}  // namespace biseam

#endif
