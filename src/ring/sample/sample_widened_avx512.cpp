#include "base/intrinsics.hpp"
#include "ring/sample/sample_row_kernels.hpp"

#if defined(BISEAM_X86_64)

#include <algorithm>

#define BISEAM_STEP BISEAM_INLINED BISEAM_AVX512

// Widened kernels have so many taps that one sample's fill vectors: eight rows by eight columns of bytes are one, of pairs two.
// Four results are worked out together, samples or both components of two pairs, as their sums down fill a vector then.
namespace biseam::ring {

namespace {

constexpr int kMostTaps = 24, kSide = 8, kResults = 4;

// What all samples of a row have in common.
struct Kernel {
  SampleSource source;
  AxisWeights across, down;
  Finish finish;
  bool fine;
  std::ptrdiff_t rows[kMostTaps];  // bytes from the first tap's row; past the last tap it is repeated
  __mmask8 columns_kept[kMostTaps / kSide], rows_kept[kMostTaps / kSide];

  BISEAM_STEP explicit Kernel(const SampleJob& job)
      : source(job.source), across(*job.across), down(*job.down), finish(job), fine(job.output == SampleOutput::fine) {
    for (int k = 0; k < kMostTaps; ++k) rows[k] = std::min(k, down.taps - 1) * source.stride;
    for (int k = 0; k < kMostTaps / kSide; ++k) {
      columns_kept[k] = static_cast<__mmask8>((1u << std::clamp(across.taps - kSide * k, 0, kSide)) - 1);
      rows_kept[k] = static_cast<__mmask8>((1u << std::clamp(down.taps - kSide * k, 0, kSide)) - 1);
    }
  }
};

// Where a sample's taps begin, and its phases.
struct Place {
  const uint8_t* first;
  int column_phase, row_phase;
};

BISEAM_STEP __m128i weights_at(const AxisWeights& axis, int phase, int chunk, __mmask8 kept) {
  return _mm_maskz_loadu_epi16(kept, axis.words + phase * axis.padded_taps + kSide * chunk);
}

// Parts of eight weights in bytes, see AxisWeights, again and again.
struct Parts {
  __m512i high, low;
};

BISEAM_STEP Parts parts_of(__m128i weights) {
  const __m128i high = _mm_srai_epi16(_mm_add_epi16(weights, _mm_set1_epi16(64)), 7);
  const __m128i both = _mm_packs_epi16(high, _mm_sub_epi16(weights, _mm_slli_epi16(high, 7)));
  return {_mm512_broadcastq_epi64(both), _mm512_broadcastq_epi64(_mm_unpackhi_epi64(both, both))};
}

BISEAM_STEP __m512i weigh(__m512i sum, __m512i bytes, const Parts& parts) {
  const __m512i high = _mm512_dpbusd_epi32(_mm512_setzero_si512(), bytes, parts.high);
  return _mm512_dpbusd_epi32(_mm512_add_epi32(sum, _mm512_slli_epi32(high, 7)), bytes, parts.low);
}

BISEAM_STEP __m512i four(__m128i a, __m128i b, __m128i c, __m128i d) {
  const __m256i low = _mm256_inserti128_si256(_mm256_castsi128_si256(a), b, 1);
  const __m256i high = _mm256_inserti128_si256(_mm256_castsi128_si256(c), d, 1);
  return _mm512_inserti64x4(_mm512_castsi256_si512(low), high, 1);
}

// Quarter k: rows 2 k and 2 k + 1.
BISEAM_STEP __m512i load_bytes(const uint8_t* at, const std::ptrdiff_t* rows) {
  const auto two = [=](int k) BISEAM_AVX512 {
    const __m128i first = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(at + rows[k]));
    return _mm_castps_si128(_mm_loadh_pi(_mm_castsi128_ps(first), reinterpret_cast<const __m64*>(at + rows[k + 1])));
  };
  return four(two(0), two(2), two(4), two(6));
}

// Quarter k: row k, first components before second ones.
BISEAM_STEP __m512i load_pairs(const uint8_t* at, const std::ptrdiff_t* rows) {
  const auto one = [=](int k) BISEAM_AVX512 { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at + rows[k])); };
  return _mm512_shuffle_epi8(four(one(0), one(1), one(2), one(3)),
                             _mm512_broadcast_i32x4(_mm_setr_epi8(0, 2, 4, 6, 8, 10, 12, 14, 1, 3, 5, 7, 9, 11, 13, 15)));
}

BISEAM_STEP __m512i rounded(__m512i sums) {
  static_assert(kTapBits + 8 - kFineBits == 7);
  return _mm512_srai_epi32(_mm512_add_epi32(sums, _mm512_set1_epi32(64)), 7);
}

// Sums across of eight rows of a sample, each in two parts; quarter k: rows 2 k and 2 k + 1.
template <int across>
BISEAM_STEP __m512i sum_bytes(const Kernel& kernel, const Place& place, int down_chunk) {
  __m512i sums = _mm512_setzero_si512();
  for (int c = 0; c < across; ++c) {
    const Parts parts = parts_of(weights_at(kernel.across, place.column_phase, c, kernel.columns_kept[c]));
    sums = weigh(sums, load_bytes(place.first + kSide * c, kernel.rows + kSide * down_chunk), parts);
  }
  return sums;
}

// Of both components of a pair, rounded; quarter k: first component's row k and k + 4, then the second's.
template <int across>
BISEAM_STEP __m512i sum_pairs(const Kernel& kernel, const Place& place, int down_chunk) {
  __m512i upper = _mm512_setzero_si512(), lower = upper;
  for (int c = 0; c < across; ++c) {
    const Parts parts = parts_of(weights_at(kernel.across, place.column_phase, c, kernel.columns_kept[c]));
    const uint8_t* const at = place.first + 2 * kSide * c;
    upper = weigh(upper, load_pairs(at, kernel.rows + kSide * down_chunk), parts);
    lower = weigh(lower, load_pairs(at, kernel.rows + kSide * down_chunk + kSide / 2), parts);
  }
  const __m512i first = _mm512_unpacklo_epi32(upper, lower), second = _mm512_unpackhi_epi32(upper, lower);
  return rounded(_mm512_add_epi32(_mm512_unpacklo_epi64(first, second), _mm512_unpackhi_epi64(first, second)));
}

BISEAM_STEP __m512i add_parts(__m512i a, __m512i b) {
  const __m512 first = _mm512_castsi512_ps(a), second = _mm512_castsi512_ps(b);
  return rounded(_mm512_add_epi32(_mm512_castps_si512(_mm512_shuffle_ps(first, second, 0x88)),
                                  _mm512_castps_si512(_mm512_shuffle_ps(first, second, 0xDD))));
}

// Rows of all results as words, two by two, and what they weigh.
struct Column {
  __m512i rows, weights;
};

template <SampleType type, int across>
BISEAM_STEP Column column_of(const Kernel& kernel, const Place* places, int chunk) {
  const auto down = [&](int i)
                        BISEAM_AVX512 { return weights_at(kernel.down, places[i].row_phase, chunk, kernel.rows_kept[chunk]); };
  if constexpr (is_pairs(type)) {
    const __m512i two = _mm512_castsi256_si512(_mm256_inserti128_si256(_mm256_castsi128_si256(down(0)), down(1), 1));
    const __m512i turns = _mm512_add_epi16(_mm512_broadcast_i32x4(_mm_setr_epi16(0, 4, 0, 4, 8, 12, 8, 12)),
                                           four(_mm_set1_epi16(0), _mm_set1_epi16(1), _mm_set1_epi16(2), _mm_set1_epi16(3)));
    return {_mm512_packs_epi32(sum_pairs<across>(kernel, places[0], chunk), sum_pairs<across>(kernel, places[1], chunk)),
            _mm512_permutexvar_epi16(turns, two)};
  } else {
    const __m512i first = add_parts(sum_bytes<across>(kernel, places[0], chunk), sum_bytes<across>(kernel, places[1], chunk));
    const __m512i second = add_parts(sum_bytes<across>(kernel, places[2], chunk), sum_bytes<across>(kernel, places[3], chunk));
    const __m512i turns = _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
    return {_mm512_packs_epi32(first, second), _mm512_permutexvar_epi32(turns, four(down(0), down(1), down(2), down(3)))};
  }
}

BISEAM_STEP void store(const Kernel& kernel, __m128i sums, uint8_t* destination) {
  const Finish& finish = kernel.finish;
  const __m128i values = _mm_sra_epi32(_mm_add_epi32(sums, _mm_set1_epi32(finish.half)), _mm_cvtsi32_si128(finish.shift));
  const __m128i words = _mm_packs_epi32(values, values);
  if (kernel.fine) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(destination), words);
  } else {
    _mm_storeu_si32(destination, _mm_packus_epi16(words, words));
  }
}

// Brings what the panorama's next row will want near: it lies that much farther down, or is there already.  There may be
// nothing; nothing is read.
BISEAM_STEP void ask_for_rows(const Kernel& kernel, const Place& place) {
  constexpr int kRows = 3;
  for (int k = 0; k < kRows; ++k) {
    const auto below = static_cast<uintptr_t>(kernel.down.taps + k) * static_cast<uintptr_t>(kernel.source.stride);
    _mm_prefetch(reinterpret_cast<const char*>(reinterpret_cast<uintptr_t>(place.first) + below), _MM_HINT_T0);
  }
}

// across: eights of columns that hold all taps.
template <SampleType type, int across>
BISEAM_STEP bool sample_four(const Kernel& kernel, const int32_t* x, const int32_t* y, uint8_t* destination) {
  constexpr int samples = kResults / bytes_of(type);
  const int last_column = kernel.source.width - kSide * across, last_row = kernel.source.height - kernel.down.taps;
  Place places[samples];
  for (int i = 0; i < samples; ++i) {
    const AxisPlace column = place_on(kernel.across, x[i]), row = place_on(kernel.down, y[i]);
    if (column.first < 0 || column.first > last_column || row.first < 0 || row.first > last_row) return false;
    places[i] = {kernel.source.first + row.first * kernel.source.stride + std::ptrdiff_t{column.first} * bytes_of(type),
                 column.phase, row.phase};
  }
  ask_for_rows(kernel, places[0]);
  __m512i sums = _mm512_setzero_si512();
  for (int chunk = 0; chunk * kSide < kernel.down.taps; ++chunk) {
    const Column column = column_of<type, across>(kernel, places, chunk);
    sums = _mm512_dpwssd_epi32(sums, column.rows, column.weights);
  }
  const __m256i half = _mm256_add_epi32(_mm512_castsi512_si256(sums), _mm512_extracti64x4_epi64(sums, 1));
  store(kernel, _mm_add_epi32(_mm256_castsi256_si128(half), _mm256_extracti128_si256(half, 1)), destination);
  return true;
}

template <SampleType type, int across>
BISEAM_AVX512 void sample_blocks(const SampleJob& job, const int32_t* x, const int32_t* y, uint8_t* destination,
                                 int count) noexcept {
  constexpr int samples = kResults / bytes_of(type);
  if (count < samples) return sample_rest(sample_blocks<type, across>, samples, job, x, y, destination, count);
  const Kernel kernel(job);
  const int bytes = output_bytes_of(type, job.output);
  for (int i = 0; i < count; i += samples) {
    i = std::min(i, count - samples);
    if (!sample_four<type, across>(kernel, x + i, y + i, destination + i * bytes)) {
      sample_row_scalar(job, x + i, y + i, destination + i * bytes, samples);
    }
  }
}

template <SampleType type>
BISEAM_STEP void sample_type(const SampleJob& job, const int32_t* x, const int32_t* y, uint8_t* destination, int count) {
  if (job.across->taps <= kSide) return sample_blocks<type, 1>(job, x, y, destination, count);
  if (job.across->taps <= 2 * kSide) return sample_blocks<type, 2>(job, x, y, destination, count);
  sample_blocks<type, 3>(job, x, y, destination, count);
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
