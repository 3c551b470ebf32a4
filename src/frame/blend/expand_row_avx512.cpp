#include "frame/blend/expand_row.hpp"

#if defined(BISEAM_X86_64)

#include "base/intrinsics.hpp"

namespace biseam {

namespace {

constexpr ptrdiff_t kPixels = 5;  // at a time, 15 samples
constexpr int kLanes = 15;

struct Lanes {
  alignas(64) int32_t lane[16];
};

// Source and doubled pixels take turns: lanes of on and, 16 further, of between, from the given result on.
constexpr Lanes taking_turns(int first) {
  Lanes lanes{};
  for (int i = 0; i < kLanes; ++i) {
    const int pixel = (first + i) / 3;
    lanes.lane[i] = 3 * (pixel / 2) + i % 3 + pixel % 2 * 16;
  }
  return lanes;
}

constexpr Lanes kFirstTurns = taking_turns(0), kLastTurns = taking_turns(kLanes);

// n pixels, at most kPixels; n is a constant wherever that many are left.
BISEAM_INLINED BISEAM_AVX512 void expand_group(const int32_t* src, int32_t* row, ptrdiff_t n, __m512i first_turns,
                                               __m512i last_turns) {
  const uint32_t out = (uint32_t{1} << (6 * n)) - 1;
  const __mmask16 lanes = static_cast<__mmask16>((uint32_t{1} << (3 * n)) - 1);
  const __m512i before = _mm512_maskz_loadu_epi32(lanes, src - 3), middle = _mm512_maskz_loadu_epi32(lanes, src);
  const __m512i after = _mm512_maskz_loadu_epi32(lanes, src + 3);
  const __m512i between = _mm512_slli_epi32(_mm512_add_epi32(middle, after), 2);
  const __m512i by_two = _mm512_add_epi32(middle, middle);
  const __m512i on = _mm512_add_epi32(_mm512_add_epi32(before, after), _mm512_add_epi32(by_two, _mm512_slli_epi32(by_two, 1)));
  _mm512_mask_storeu_epi32(row, static_cast<__mmask16>(out & ((1U << kLanes) - 1)),
                           _mm512_permutex2var_epi32(on, first_turns, between));
  _mm512_mask_storeu_epi32(row + kLanes, static_cast<__mmask16>(out >> kLanes),
                           _mm512_permutex2var_epi32(on, last_turns, between));
}

}  // namespace

BISEAM_AVX512 void expand_pixels_avx512(const int32_t* src, int32_t* row, ptrdiff_t pixels) noexcept {
  const __m512i first_turns = _mm512_load_si512(kFirstTurns.lane), last_turns = _mm512_load_si512(kLastTurns.lane);
  ptrdiff_t i = 0;
  for (; i + kPixels <= pixels; i += kPixels) {
    expand_group(src + 3 * i, row + 6 * i, kPixels, first_turns, last_turns);
  }
  if (i < pixels) expand_group(src + 3 * i, row + 6 * i, pixels - i, first_turns, last_turns);
}

}  // namespace biseam

#endif
