// Taps of sixteen lanes of 32 bits, taken out of rows of a picture.
#pragma once

#include "base/intrinsics.hpp"
#include "ring/sample/sample_row.hpp"
#include "ring/sample/weights_avx512.hpp"

#if defined(BISEAM_X86_64)

#include <algorithm>

namespace biseam::ring {

constexpr int kLanes = 16;

// What a lane is: a sample of bytes, a component of a pair of bytes, or half the taps of a word's component.
template <SampleType type>
struct Shape {
  static constexpr int kUnit = bytes_of(type);  // of a column
  static constexpr int kLanesEach = kUnit, kSamples = kLanes / kLanesEach;
};

// A lane's four bytes of four taps, counted from the first tap's sample.
template <SampleType type>
BISEAM_STEP __m512i lane_bytes() {
  switch (type) {
    case SampleType::bytes:
      return all(0x03020100);
    case SampleType::byte_pairs:
      return _mm512_set1_epi64(0x0705030106040200);
    case SampleType::words:
      return _mm512_set1_epi64(0x0706050403020100);
    default:  // u u, u u, v v, v v
      return _mm512_broadcast_i32x4(_mm_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, 2, 3, 6, 7, 10, 11, 14, 15));
  }
}

// The window that begins with the smaller of a run's ends, moved inside the picture.  Both ends lie in it unless they are too
// far apart; what lies between them is checked by the lanes.
struct Corner {
  int column, row;
};

template <SampleType type, int taps>
struct Window {
  static constexpr int kReach = taps * Shape<type>::kUnit;  // bytes of a lane's taps
  static constexpr int kFlatBytes = 32, kFlatRows = 4, kSteepBytes = 16, kSteepRows = 8;
};

// Row pairs, or rows by fours, from consecutive rows.
BISEAM_STEP __m256i load_32(const uint8_t* bytes) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes)); }
BISEAM_STEP __m128i load_16(const uint8_t* bytes) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes)); }

// Brings what the row below will want near: a block's rows lie one below the other.  There may be nothing; nothing is read.
BISEAM_STEP void ask_for_row(const uint8_t* window, std::ptrdiff_t stride, int row) {
  const uintptr_t at = reinterpret_cast<uintptr_t>(window) + static_cast<uintptr_t>(stride) * static_cast<uintptr_t>(row);
  _mm_prefetch(reinterpret_cast<const char*>(at), _MM_HINT_T0);
}

BISEAM_STEP __m512i load_2x32(const uint8_t* bytes, std::ptrdiff_t stride) {
  return _mm512_inserti64x4(_mm512_castsi256_si512(load_32(bytes)), load_32(bytes + stride), 1);
}

template <int rows>
BISEAM_STEP __m512i load_4x16(const uint8_t* bytes, std::ptrdiff_t stride) {
  __m512i four = _mm512_castsi128_si512(load_16(bytes));
  if constexpr (rows > 1) four = _mm512_inserti32x4(four, load_16(bytes + stride), 1);
  if constexpr (rows > 2) four = _mm512_inserti32x4(four, load_16(bytes + 2 * stride), 2);
  if constexpr (rows > 3) four = _mm512_inserti32x4(four, load_16(bytes + 3 * stride), 3);
  return four;
}

BISEAM_STEP __m128i load_2x8(const uint8_t* bytes, std::ptrdiff_t stride) {
  const __m128i upper = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(bytes));
  return _mm_castpd_si128(_mm_loadh_pd(_mm_castsi128_pd(upper), reinterpret_cast<const double*>(bytes + stride)));
}

// Eight rows of 8 bytes.
BISEAM_STEP __m512i load_8x8(const uint8_t* bytes, std::ptrdiff_t stride) {
  const __m256i above =
      _mm256_inserti128_si256(_mm256_castsi128_si256(load_2x8(bytes, stride)), load_2x8(bytes + 2 * stride, stride), 1);
  const __m256i below = _mm256_inserti128_si256(_mm256_castsi128_si256(load_2x8(bytes + 4 * stride, stride)),
                                                load_2x8(bytes + 6 * stride, stride), 1);
  return _mm512_inserti64x4(_mm512_castsi256_si512(above), below, 1);
}

// Where the lanes' bytes lie in a window of width bytes, for the first four taps.
template <SampleType type, int width>
BISEAM_STEP __m512i byte_indices(__m512i column, __m512i row) {
  const __m512i index =
      _mm512_add_epi32(_mm512_mullo_epi32(row, all(width)), _mm512_mullo_epi32(column, all(Shape<type>::kUnit)));
  const __m512i each =
      _mm512_shuffle_epi8(index, _mm512_broadcast_i32x4(_mm_setr_epi8(0, 0, 0, 0, 4, 4, 4, 4, 8, 8, 8, 8, 12, 12, 12, 12)));
  return _mm512_add_epi8(each, lane_bytes<type>());
}

template <SampleType type, int taps>
struct Taps {
  static constexpr int kChunks = (taps + 3) / 4;
  __m512i row[taps][kChunks];
};

template <SampleType type, int taps>
BISEAM_STEP Taps<type, taps> pick_flat(const uint8_t* window, std::ptrdiff_t stride, __m512i indices) {
  __m512i pairs[taps + 2];
  for (int k = 0; k < taps + 2; ++k) pairs[k] = load_2x32(window + k * stride, stride);
  Taps<type, taps> picked;
  for (int c = 0; c < picked.kChunks; ++c) {
    const __m512i at = _mm512_add_epi8(indices, _mm512_set1_epi8(static_cast<char>(4 * Shape<type>::kUnit * c)));
    for (int k = 0; k < taps; ++k) picked.row[k][c] = _mm512_permutex2var_epi8(pairs[k], at, pairs[k + 2]);
  }
  return picked;
}

template <int count>
struct Fours {
  __m512i rows[count];
};

// How the rows of so many fours are loaded: four by four.
template <int count>
struct FourLoads {
  static constexpr int kLast = (count + 2) / 4 * 4, kWhole = kLast / 4 + 1, kLeft = count + 3 - kLast;
};

// rows[k]: rows k to k + 3.  whole[k]: rows 4 k to 4 k + 3.
template <int count>
BISEAM_STEP Fours<count> fours_of(const __m512i* whole) {
  Fours<count> fours;
  for (int k = 0; k < count; ++k) {
    const __m512i low = whole[k / 4], high = whole[std::min(k / 4 + 1, FourLoads<count>::kWhole - 1)];
    switch (k % 4) {
      case 0:
        fours.rows[k] = low;
        break;
      case 1:
        fours.rows[k] = _mm512_alignr_epi64(high, low, 2);
        break;
      case 2:
        fours.rows[k] = _mm512_alignr_epi64(high, low, 4);
        break;
      default:
        fours.rows[k] = _mm512_alignr_epi64(high, low, 6);
    }
  }
  return fours;
}

template <int count>
BISEAM_STEP Fours<count> load_fours(const uint8_t* window, std::ptrdiff_t stride) {
  using Loads = FourLoads<count>;
  __m512i whole[Loads::kWhole];
  for (int k = 0; k < Loads::kLast; k += 4) whole[k / 4] = load_4x16<4>(window + k * stride, stride);
  whole[Loads::kLast / 4] = load_4x16<Loads::kLeft>(window + Loads::kLast * stride, stride);
  return fours_of<count>(whole);
}

template <SampleType type, int taps>
BISEAM_STEP Taps<type, taps> pick_steep(const uint8_t* left, const uint8_t* right, std::ptrdiff_t stride, __m512i indices) {
  const auto low = load_fours<taps + 4>(left, stride), high = load_fours<taps + 4>(right, stride);
  Taps<type, taps> picked;
  for (int c = 0; c < picked.kChunks; ++c) {
    const __m512i at = _mm512_add_epi8(indices, _mm512_set1_epi8(static_cast<char>(4 * Shape<type>::kUnit * c)));
    for (int k = 0; k < taps; ++k) {
      picked.row[k][c] = _mm512_mask_blend_epi32(0xFF00, _mm512_permutex2var_epi8(low.rows[k], at, low.rows[k + 4]),
                                                 _mm512_permutex2var_epi8(high.rows[k], at, high.rows[k + 4]));
    }
  }
  return picked;
}

}  // namespace biseam::ring

#endif
