// Weights of sixteen lanes of 32 bits, looked up by their phases.
#pragma once

#include "base/intrinsics.hpp"
#include "ring/sample/sample_row_kernels.hpp"

#if defined(BISEAM_X86_64)

#include <algorithm>

#define BISEAM_STEP BISEAM_INLINED BISEAM_AVX512

namespace biseam::ring {

BISEAM_STEP __m512i all(int32_t value) { return _mm512_set1_epi32(value); }

template <int taps>
struct Phases {
  static constexpr int kBits = taps == 2 ? 6 : 7, kCount = 1 << kBits, kHalf = 1 << (15 - kBits);
  static constexpr int kBefore = taps / 2 - 1;

  // Of a position, before the window's corner is known.
  static int first_of(int32_t position) {
    return (static_cast<int32_t>(static_cast<uint32_t>(position) + kHalf) >> 16) - kBefore;
  }
};

// The place of the phase in each byte of the lanes.  Higher bits are ignored by whoever looks up.
template <int taps>
BISEAM_STEP __m512i phases_of(__m512i rounded) {
  return _mm512_shuffle_epi8(_mm512_srli_epi32(rounded, 8 - Phases<taps>::kBits),
                             _mm512_broadcast_i32x4(_mm_setr_epi8(1, 1, 1, 1, 5, 5, 5, 5, 9, 9, 9, 9, 13, 13, 13, 13)));
}

// Bytes of a table of all phases, where they are wanted; elsewhere what has been found so far, or still the phases.
template <int taps>
BISEAM_STEP __m512i look_up(__m512i found, __mmask64 where, const int8_t* table) {
  if constexpr (taps == 2) return _mm512_mask_permutexvar_epi8(found, where, found, _mm512_load_si512(table));
  return _mm512_mask2_permutex2var_epi8(_mm512_load_si512(table), found, where, _mm512_load_si512(table + 64));
}

template <int taps>
BISEAM_STEP const int8_t* part_of(const int8_t* parts, int tap, int part) {
  return parts + (2 * tap + part) * Phases<taps>::kCount;
}

constexpr __mmask64 kFirstBytes = 0x1111111111111111;

// The upper or lower parts of four taps' weights, or of two and nothing.
template <int taps>
BISEAM_STEP __m512i look_up_parts(const int8_t* parts, __m512i phases, int tap, int part) {
  for (int k = 0; k < std::min(4, taps - tap); ++k) {
    phases = look_up<taps>(phases, kFirstBytes << k, part_of<taps>(parts, tap + k, part));
  }
  if (taps - tap >= 4) return phases;
  return _mm512_and_si512(phases, all(0xffff));
}

// Two weights as words, in the lanes that are asked for: at first bytes of both parts.
template <int taps>
BISEAM_STEP __m512i look_up_two(const int8_t* parts, __m512i phases, int tap, __mmask64 lanes) {
  for (int k = 0; k < 2; ++k) {
    phases = look_up<taps>(phases, (kFirstBytes << (2 * k)) & lanes, part_of<taps>(parts, tap + k, 0));
    if (taps > 2) phases = look_up<taps>(phases, (kFirstBytes << (2 * k + 1)) & lanes, part_of<taps>(parts, tap + k, 1));
  }
  return phases;
}

// With 64 phases between two samples weights are multiples of 128: there is no lower part.
template <int taps>
BISEAM_STEP __m512i to_words(__m512i parts) {
  return _mm512_maddubs_epi16(_mm512_set1_epi16(taps > 2 ? 0x0180 : 0x0080), parts);
}

template <SampleType type, int taps>
struct Weights {
  static constexpr int kChunks = (taps + 3) / 4;
  __m512i across[kChunks][2];  // bytes: both parts; words: the first alone
  __m512i down[taps / 2];
};

template <SampleType type, int taps>
BISEAM_STEP Weights<type, taps> look_up_all(const int8_t* parts, __m512i columns, __m512i rows) {
  Weights<type, taps> weights;
  for (int c = 0; c < weights.kChunks; ++c) {
    if constexpr (is_words(type)) {
      constexpr __mmask64 even = 0x0f0f0f0f0f0f0f0f;
      __m512i found = look_up_two<taps>(parts, columns, 4 * c, even);
      if (taps - 4 * c >= 4) {
        found = look_up_two<taps>(parts, found, 4 * c + 2, ~even);
      } else {
        found = _mm512_maskz_mov_epi8(even, found);
      }
      weights.across[c][0] = to_words<taps>(found);
    } else {
      weights.across[c][0] = look_up_parts<taps>(parts, columns, 4 * c, 0);
      weights.across[c][1] = look_up_parts<taps>(parts, columns, 4 * c, 1);
    }
  }
  for (int k = 0; k < taps / 2; ++k) weights.down[k] = to_words<taps>(look_up_two<taps>(parts, rows, 2 * k, ~__mmask64{0}));
  return weights;
}

// The first sum of a row, rounded.  Bytes: what the upper parts give is whole already.
template <SampleType type, int taps>
BISEAM_STEP __m512i weigh_across(const SampleSource& source, const Weights<type, taps>& weights, const __m512i* picked) {
  if constexpr (is_words(type)) {
    const int shift = across_shift(source);
    const __m512i most = _mm512_set1_epi16(static_cast<int16_t>((1 << source.bits) - 1));
    __m512i half = _mm512_setzero_si512();
    for (int c = 0; c < weights.kChunks; ++c) {
      const __m512i shifted = _mm512_srl_epi16(picked[c], _mm_cvtsi32_si128(source.shift));
      half = _mm512_dpwssd_epi32(half, _mm512_min_epu16(shifted, most), weights.across[c][0]);
    }
    const __m512i sum = _mm512_add_epi32(half, _mm512_shuffle_epi32(half, _MM_PERM_CDAB));
    return _mm512_sra_epi32(_mm512_add_epi32(sum, all(1 << (shift - 1))), _mm_cvtsi32_si128(shift));
  } else {
    static_assert(kTapBits + 8 - kFineBits == 7);
    __m512i sum = all(64);
    for (int c = 0; c < weights.kChunks; ++c) sum = _mm512_dpbusd_epi32(sum, picked[c], weights.across[c][1]);
    sum = _mm512_srai_epi32(sum, 7);
    for (int c = 0; c < weights.kChunks; ++c) sum = _mm512_dpbusd_epi32(sum, picked[c], weights.across[c][0]);
    return sum;
  }
}

}  // namespace biseam::ring

#endif
