#include "base/intrinsics.hpp"
#include "ring/sample/sample_row_kernels.hpp"

#if defined(BISEAM_X86_64)

#include <algorithm>
#include <cstring>

#define BISEAM_STEP [[gnu::always_inline]] BISEAM_AVX512 inline

// Sample by sample: widened kernels have so many taps that one sample's fill vectors.  Each quarter of a vector is 16 bytes of
// a row of the picture; four vectors hold up to 16 rows.
namespace biseam::ring {

namespace {

constexpr int kMostTaps = 16;

// A kernel's weights at a phase, as words in order; none past the last one.
BISEAM_STEP __m256i weights_at(const AxisWeights& axis, int phase) {
  const auto kept = static_cast<__mmask16>((1u << axis.padded_taps) - 1);
  return _mm256_maskz_loadu_epi16(kept, axis.words + phase * axis.padded_taps);
}

// Parts of 16 weights in bytes, see AxisWeights, in each quarter.
struct Parts {
  __m512i high, low;
};

BISEAM_STEP Parts parts_of(__m256i weights) {
  const __m256i high = _mm256_srai_epi16(_mm256_add_epi16(weights, _mm256_set1_epi16(64)), 7);
  const __m256i low = _mm256_sub_epi16(weights, _mm256_slli_epi16(high, 7));
  return {_mm512_broadcast_i32x4(_mm256_cvtepi16_epi8(high)), _mm512_broadcast_i32x4(_mm256_cvtepi16_epi8(low))};
}

// Eight of them, at every second byte, for the first components of pairs.
BISEAM_STEP __m512i spread(__m512i parts, int first) {
  const __m128i eight = first == 0 ? _mm512_castsi512_si128(parts) : _mm_srli_si128(_mm512_castsi512_si128(parts), 8);
  return _mm512_broadcast_i32x4(_mm_cvtepu8_epi16(eight));
}

// Rows k, k + 4, k + 8 and k + 12 of those that there are; past the last one it is repeated.
BISEAM_STEP __m512i load_rows(const uint8_t* at, std::ptrdiff_t stride, int k, int taps) {
  const auto row = [=](int index) BISEAM_AVX512 {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at + std::min(index, taps - 1) * stride));
  };
  __m512i rows = _mm512_castsi128_si512(row(k));
  if (taps > 4) rows = _mm512_inserti32x4(rows, row(k + 4), 1);
  if (taps > 8) rows = _mm512_inserti32x4(rows, row(k + 8), 2);
  if (taps > 12) rows = _mm512_inserti32x4(rows, row(k + 12), 3);
  return rows;
}

// Four sums of each quarter, of four vectors, added up: the results lie in order.
BISEAM_STEP __m512i add_up(const __m512i (&sums)[4]) {
  const __m512i a = _mm512_add_epi32(_mm512_unpacklo_epi32(sums[0], sums[1]), _mm512_unpackhi_epi32(sums[0], sums[1]));
  const __m512i b = _mm512_add_epi32(_mm512_unpacklo_epi32(sums[2], sums[3]), _mm512_unpackhi_epi32(sums[2], sums[3]));
  return _mm512_add_epi32(_mm512_unpacklo_epi64(a, b), _mm512_unpackhi_epi64(a, b));
}

BISEAM_STEP __m512i weigh(__m512i sum, __m512i bytes, const Parts& parts) {
  const __m512i high = _mm512_dpbusd_epi32(_mm512_setzero_si512(), bytes, parts.high);
  return _mm512_dpbusd_epi32(_mm512_add_epi32(sum, _mm512_slli_epi32(high, 7)), bytes, parts.low);
}

// A column of first sums, rounded, times the weights down, added up.
BISEAM_STEP int32_t finish_column(const __m512i (&sums)[4], __m512i down) {
  static_assert(kTapBits + 8 - kFineBits == 7);
  const __m512i rows = _mm512_srai_epi32(_mm512_add_epi32(add_up(sums), _mm512_set1_epi32(64)), 7);
  return _mm512_reduce_add_epi32(_mm512_mullo_epi32(rows, down));
}

BISEAM_STEP void sample_byte(const SampleJob& job, const uint8_t* at, const Parts& across, __m512i down, int32_t* results) {
  __m512i sums[4];
  for (int k = 0; k < 4; ++k) {
    sums[k] = weigh(_mm512_setzero_si512(), load_rows(at, job.source.stride, k, job.down->taps), across);
  }
  results[0] = finish_column(sums, down);
}

BISEAM_STEP void sample_pair(const SampleJob& job, const uint8_t* at, const Parts& across, __m512i down, int32_t* results) {
  __m512i first[4], second[4];
  for (int k = 0; k < 4; ++k) first[k] = second[k] = _mm512_setzero_si512();
  for (int tap = 0; tap < job.across->taps; tap += 8) {
    const Parts even = {spread(across.high, tap), spread(across.low, tap)};
    const Parts odd = {_mm512_slli_epi16(even.high, 8), _mm512_slli_epi16(even.low, 8)};
    for (int k = 0; k < 4; ++k) {
      const __m512i rows = load_rows(at + 2 * tap, job.source.stride, k, job.down->taps);
      first[k] = weigh(first[k], rows, even);
      second[k] = weigh(second[k], rows, odd);
    }
  }
  results[0] = finish_column(first, down);
  results[1] = finish_column(second, down);
}

template <SampleType type>
BISEAM_AVX512 void sample_type(const SampleJob& job, const int32_t* x, const int32_t* y, uint8_t* destination, int count) {
  constexpr int components = is_pairs(type) ? 2 : 1;
  const AxisWeights across_axis = *job.across, down_axis = *job.down;
  const int reach = is_pairs(type) ? (across_axis.taps + 7) / 8 * 8 : kMostTaps, bytes = output_bytes_of(type, job.output);
  const int last_column = job.source.width - reach, last_row = job.source.height - down_axis.taps;
  const Finish finish(job);
  for (int i = 0; i < count; ++i, destination += bytes) {
    const AxisPlace column = place_on(across_axis, x[i]), row = place_on(down_axis, y[i]);
    if (column.first < 0 || column.first > last_column || row.first < 0 || row.first > last_row) {
      sample_row_scalar(job, x + i, y + i, destination, 1);
      continue;
    }
    const uint8_t* at = job.source.first + row.first * job.source.stride + std::ptrdiff_t{column.first} * components;
    const Parts across = parts_of(weights_at(across_axis, column.phase));
    const __m512i down = _mm512_cvtepi16_epi32(weights_at(down_axis, row.phase));
    int32_t results[components];
    if constexpr (is_pairs(type)) {
      sample_pair(job, at, across, down, results);
    } else {
      sample_byte(job, at, across, down, results);
    }
    for (int c = 0; c < components; ++c) {
      const auto word = static_cast<uint16_t>(finish(results[c]));
      if (bytes == components) {
        destination[c] = static_cast<uint8_t>(word);
      } else {
        std::memcpy(destination + 2 * c, &word, sizeof word);
      }
    }
  }
}

}  // namespace

BISEAM_AVX512 bool sample_widened_avx512(const SampleJob& job, const int32_t* x, const int32_t* y, uint8_t* destination,
                                         int count) noexcept {
  if (is_words(job.source.type) || job.across->taps > kMostTaps || job.down->taps > kMostTaps) return false;
  if (is_pairs(job.source.type)) {
    sample_type<SampleType::byte_pairs>(job, x, y, destination, count);
  } else {
    sample_type<SampleType::bytes>(job, x, y, destination, count);
  }
  return true;
}

}  // namespace biseam::ring

#endif
