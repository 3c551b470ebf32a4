#include "frame/blend/byte_rows.hpp"

#if defined(BISEAM_X86_64)

#include "base/intrinsics.hpp"

namespace biseam {

namespace {

// At a time.
constexpr ptrdiff_t kReduced = 9;    // from 63 samples
constexpr ptrdiff_t kExpanded = 10;  // to twice 30 samples
constexpr int kLanes = 30;

constexpr uint64_t first_lanes(ptrdiff_t count) { return (uint64_t{1} << count) - 1; }

struct Lanes {
  alignas(64) uint16_t lane[32];
};

// Source and doubled pixels take turns: lanes of on and, 32 further, of between, from the given pixel on.
constexpr Lanes taking_turns(int pixel) {
  Lanes lanes{};
  for (int i = 0; i < kLanes; ++i) lanes.lane[i] = static_cast<uint16_t>(3 * (pixel + i / 6) + i % 3 + (i / 3 % 2) * 32);
  return lanes;
}

// Of 64 samples, every second pixel from the given one on.
constexpr Lanes every_second(int pixel) {
  Lanes lanes{};
  for (int i = 0; i < 3 * kReduced; ++i) lanes.lane[i] = static_cast<uint16_t>(3 * (2 * (i / 3) + pixel) + i % 3);
  return lanes;
}

constexpr Lanes kFirstTurns = taking_turns(0), kLastTurns = taking_turns(5);
constexpr Lanes kSecondPixels[5] = {every_second(0), every_second(1), every_second(2), every_second(3), every_second(4)};

BISEAM_AVX512 inline __m512i widened(const uint8_t* s, __mmask32 lanes) {
  return _mm512_cvtepu8_epi16(_mm256_maskz_loadu_epi8(lanes, s));
}

// n pixels, at most kReduced; n is a constant wherever that many are left.
BISEAM_INLINED BISEAM_AVX512 void reduce_group(const uint16_t* sums, uint8_t* row, ptrdiff_t n, const __m512i take[5]) {
  // From two pixels before the first to two behind the last.  Nothing is read where no lane is left.
  const uint64_t lanes = first_lanes(6 * n + 9);
  const __m512i low = _mm512_maskz_loadu_epi16(static_cast<__mmask32>(lanes), sums - 6);
  const __m512i high = _mm512_maskz_loadu_epi16(static_cast<__mmask32>(lanes >> 32), sums + 26);
  __m512i pixel[5];
  for (int k = 0; k < 5; ++k) pixel[k] = _mm512_permutex2var_epi16(low, take[k], high);
  const __m512i outer = _mm512_add_epi16(pixel[0], pixel[4]), inner = _mm512_add_epi16(pixel[1], pixel[3]);
  const __m512i by_four = _mm512_slli_epi16(_mm512_add_epi16(inner, pixel[2]), 2);
  const __m512i by_two = _mm512_add_epi16(_mm512_add_epi16(pixel[2], pixel[2]), _mm512_set1_epi16(128));
  const __m512i sum = _mm512_add_epi16(_mm512_add_epi16(outer, by_two), by_four);
  const __m256i bytes = _mm512_cvtepi16_epi8(_mm512_srli_epi16(sum, 8));
  _mm256_mask_storeu_epi8(row, static_cast<__mmask32>(first_lanes(3 * n)), bytes);
}

// n pixels, at most kExpanded.
BISEAM_INLINED BISEAM_AVX512 void expand_group(const uint8_t* src, uint16_t* row, ptrdiff_t n, __m512i first_turns,
                                               __m512i last_turns) {
  const __mmask32 lanes = static_cast<__mmask32>(first_lanes(3 * n));
  const __m512i before = widened(src - 3, lanes), middle = widened(src, lanes), after = widened(src + 3, lanes);
  const __m512i between = _mm512_slli_epi16(_mm512_add_epi16(middle, after), 2);
  const __m512i by_two = _mm512_add_epi16(middle, middle);
  const __m512i on = _mm512_add_epi16(_mm512_add_epi16(before, after), _mm512_add_epi16(by_two, _mm512_slli_epi16(by_two, 1)));
  const uint64_t out = first_lanes(6 * n);
  _mm512_mask_storeu_epi16(row, static_cast<__mmask32>(out & first_lanes(kLanes)),
                           _mm512_permutex2var_epi16(on, first_turns, between));
  _mm512_mask_storeu_epi16(row + kLanes, static_cast<__mmask32>(out >> kLanes),
                           _mm512_permutex2var_epi16(on, last_turns, between));
}

}  // namespace

BISEAM_AVX512 void reduce_byte_pixels_avx512(const uint16_t* sums, uint8_t* row, ptrdiff_t pixels) noexcept {
  __m512i take[5];
  for (int k = 0; k < 5; ++k) take[k] = _mm512_load_si512(kSecondPixels[k].lane);
  ptrdiff_t x = 0;
  for (; x + kReduced <= pixels; x += kReduced) reduce_group(sums + 6 * x, row + 3 * x, kReduced, take);
  if (x < pixels) reduce_group(sums + 6 * x, row + 3 * x, pixels - x, take);
}

BISEAM_AVX512 void expand_byte_pixels_avx512(const uint8_t* src, uint16_t* row, ptrdiff_t pixels) noexcept {
  const __m512i first_turns = _mm512_load_si512(kFirstTurns.lane), last_turns = _mm512_load_si512(kLastTurns.lane);
  ptrdiff_t i = 0;
  for (; i + kExpanded <= pixels; i += kExpanded) {
    expand_group(src + 3 * i, row + 6 * i, kExpanded, first_turns, last_turns);
  }
  if (i < pixels) expand_group(src + 3 * i, row + 6 * i, pixels - i, first_turns, last_turns);
}

}  // namespace biseam

#endif
