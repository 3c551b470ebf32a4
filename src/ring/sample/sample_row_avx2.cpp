#include "base/intrinsics.hpp"
#include "ring/sample/sample_row_kernels.hpp"

#if defined(BISEAM_X86_64)

#include <algorithm>
#include <cstdlib>
#include <cstring>

#define BISEAM_STEP [[gnu::always_inline]] BISEAM_AVX2 inline

// Eight lanes of 32 bits are eight samples, or both components of four pairs.  Taps are gathered: four bytes or two words at a
// time.
namespace biseam {

namespace {

constexpr int kLanes = 8;

BISEAM_STEP __m256i all(int32_t value) { return _mm256_set1_epi32(value); }

template <SampleType type>
struct Shape {
  static constexpr int kComponents = is_pairs(type) ? 2 : 1;
  static constexpr int kSamples = kLanes / kComponents;
  static constexpr int kTapsAtOnce = is_words(type) ? 2 : 4;
};

// First taps and phases of all lanes, of one axis.
struct Places {
  __m256i first, phase;
};

template <SampleType type>
BISEAM_STEP __m256i load_positions(const int32_t* positions) {
  if constexpr (!is_pairs(type)) return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(positions));
  const __m256i four = _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(positions)));
  return _mm256_permutevar8x32_epi32(four, _mm256_setr_epi32(0, 0, 1, 1, 2, 2, 3, 3));
}

BISEAM_STEP Places place_all(const AxisWeights& axis, __m256i positions) {
  const int below = 16 - axis.phase_bits;
  const __m256i rounded = _mm256_add_epi32(positions, all(1 << (below - 1)));
  return {_mm256_sub_epi32(_mm256_srai_epi32(rounded, 16), all(axis.before)),
          _mm256_and_si256(_mm256_srl_epi32(rounded, _mm_cvtsi32_si128(below)), all(axis.phases() - 1))};
}

// Whether all lanes lie in [0, last].
BISEAM_STEP bool all_within(__m256i values, int last) {
  const __m256i outside = _mm256_or_si256(values, _mm256_sub_epi32(all(last), values));
  return _mm256_movemask_ps(_mm256_castsi256_ps(outside)) == 0;
}

BISEAM_STEP __m256i gather(const void* base, __m256i offsets) {
  return _mm256_i32gather_epi32(static_cast<const int*>(base), offsets, 1);
}

BISEAM_STEP __m256i look_up(const int32_t* table, __m256i phases) { return _mm256_i32gather_epi32(table, phases, 4); }

// The taps of one component from 32 bits that begin at the first tap's sample, and from the next 32 bits.
BISEAM_STEP __m256i component_bytes(__m256i near, __m256i far) {
  const __m256i low = _mm256_setr_epi8(0, 2, -1, -1, 5, 7, -1, -1, 8, 10, -1, -1, 13, 15, -1, -1,  //
                                       0, 2, -1, -1, 5, 7, -1, -1, 8, 10, -1, -1, 13, 15, -1, -1);
  const __m256i high = _mm256_setr_epi8(-1, -1, 0, 2, -1, -1, 5, 7, -1, -1, 8, 10, -1, -1, 13, 15,  //
                                        -1, -1, 0, 2, -1, -1, 5, 7, -1, -1, 8, 10, -1, -1, 13, 15);
  return _mm256_or_si256(_mm256_shuffle_epi8(near, low), _mm256_shuffle_epi8(far, high));
}

BISEAM_STEP __m256i component_words(__m256i near, __m256i far) {
  const __m256i first = _mm256_blend_epi16(near, _mm256_slli_epi32(far, 16), 0xAA);
  const __m256i second = _mm256_blend_epi16(_mm256_srli_epi32(near, 16), far, 0xAA);
  return _mm256_blend_epi32(first, second, 0xAA);
}

template <SampleType type>
BISEAM_STEP __m256i load_taps(const uint8_t* base, __m256i offsets) {
  const __m256i near = gather(base, offsets);
  if constexpr (type == SampleType::byte_pairs) return component_bytes(near, gather(base + 4, offsets));
  if constexpr (type == SampleType::word_pairs) return component_words(near, gather(base + 4, offsets));
  return near;
}

// Taps k .. of all lanes times their weights.
template <SampleType type>
BISEAM_STEP __m256i weigh_taps(const SampleJob& job, __m256i taps, __m256i phases, int k) {
  const AxisWeights& axis = *job.across;
  if constexpr (is_words(type)) {
    const __m256i shifted = _mm256_srl_epi16(taps, _mm_cvtsi32_si128(job.source.shift));
    const __m256i values = _mm256_min_epu16(shifted, _mm256_set1_epi16(static_cast<int16_t>((1 << job.source.bits) - 1)));
    return _mm256_madd_epi16(values, look_up(axis.pairs + k / 2 * axis.phases(), phases));
  } else {
    const int32_t* quads = axis.quads + k / 2 * axis.phases();
    const __m256i high = _mm256_maddubs_epi16(taps, look_up(quads, phases));
    const __m256i low = _mm256_maddubs_epi16(taps, look_up(quads + axis.phases(), phases));
    return _mm256_add_epi32(_mm256_madd_epi16(high, _mm256_set1_epi16(128)), _mm256_madd_epi16(low, _mm256_set1_epi16(1)));
  }
}

template <SampleType type>
BISEAM_STEP __m256i sum_across(const SampleJob& job, const uint8_t* row, __m256i offsets, __m256i phases) {
  constexpr int step = Shape<type>::kTapsAtOnce;
  const int shift = across_shift(job.source);
  __m256i sum = all(1 << (shift - 1));
  for (int k = 0; k < job.across->taps; k += step) {
    const __m256i taps = load_taps<type>(row + static_cast<std::ptrdiff_t>(k) * bytes_of(type), offsets);
    sum = _mm256_add_epi32(sum, weigh_taps<type>(job, taps, phases, k));
  }
  return _mm256_sra_epi32(sum, _mm_cvtsi32_si128(shift));
}

template <SampleType type>
BISEAM_STEP __m256i sum_both(const SampleJob& job, const uint8_t* base, __m256i offsets, __m256i columns, __m256i rows) {
  __m256i sum = _mm256_setzero_si256();
  for (int k = 0; k < job.down->taps; k += 2) {
    const __m256i upper = sum_across<type>(job, base + k * job.source.stride, offsets, columns);
    const __m256i lower = sum_across<type>(job, base + (k + 1) * job.source.stride, offsets, columns);
    const __m256i both = _mm256_blend_epi16(upper, _mm256_slli_epi32(lower, 16), 0xAA);
    sum = _mm256_add_epi32(sum, _mm256_madd_epi16(both, look_up(job.down->pairs + k / 2 * job.down->phases(), rows)));
  }
  return sum;
}

BISEAM_STEP void store(const SampleJob& job, __m256i sum, uint8_t* destination) {
  const Finish finish(job);
  const __m256i rounded = _mm256_sra_epi32(_mm256_add_epi32(sum, all(finish.half)), _mm_cvtsi32_si128(finish.shift));
  const __m256i clamped = _mm256_min_epi32(_mm256_max_epi32(rounded, all(finish.low)), all(finish.high));
  const __m256i values = _mm256_sll_epi32(clamped, _mm_cvtsi32_si128(finish.up));
  const __m128i first = _mm256_castsi256_si128(values), second = _mm256_extracti128_si256(values, 1);
  if (job.output == SampleOutput::fine) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(destination), _mm_packs_epi32(first, second));
  } else if (is_words(job.source.type)) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(destination), _mm_packus_epi32(first, second));
  } else {
    const __m128i words = _mm_packus_epi32(first, second);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(destination), _mm_packus_epi16(words, words));
  }
}

// All lanes, if every byte that their gathers read is a sample of the picture.
template <SampleType type>
BISEAM_STEP bool sample_lanes(const SampleJob& job, const int32_t* x, const int32_t* y, uint8_t* destination) {
  constexpr int step = Shape<type>::kTapsAtOnce;
  const SampleSource& source = job.source;
  const Places columns = place_all(*job.across, load_positions<type>(x));
  const Places rows = place_all(*job.down, load_positions<type>(y));
  const int reach = (job.across->taps + step - 1) / step * step;
  if (!all_within(columns.first, source.width - reach) || !all_within(rows.first, source.height - job.down->taps)) return false;
  // From the first lane's row, so that the offsets fit 32 bits.
  const int top = _mm_cvtsi128_si32(_mm256_castsi256_si128(rows.first));
  const __m256i offsets =
      _mm256_add_epi32(_mm256_mullo_epi32(_mm256_sub_epi32(rows.first, all(top)), all(static_cast<int32_t>(source.stride))),
                       _mm256_mullo_epi32(columns.first, all(bytes_of(type))));
  store(job, sum_both<type>(job, source.first + top * source.stride, offsets, columns.phase, rows.phase), destination);
  return true;
}

template <SampleType type>
BISEAM_AVX2 void sample_type(const SampleJob& job, const int32_t* x, const int32_t* y, uint8_t* destination, int count) {
  constexpr int samples = Shape<type>::kSamples;
  const int bytes = output_bytes_of(type, job.output);
  int i = 0;
  for (; i + samples <= count; i += samples) {
    if (!sample_lanes<type>(job, x + i, y + i, destination + i * bytes)) {
      sample_row_scalar(job, x + i, y + i, destination + i * bytes, samples);
    }
  }
  if (i == count) return;
  // The rest with its last position repeated.
  int32_t last_x[samples], last_y[samples];
  uint8_t results[2 * sizeof(__m128i)];
  for (int k = 0; k < samples; ++k) last_x[k] = x[std::min(i + k, count - 1)], last_y[k] = y[std::min(i + k, count - 1)];
  if (sample_lanes<type>(job, last_x, last_y, results)) {
    std::memcpy(destination + i * bytes, results, static_cast<std::size_t>((count - i) * bytes));
  } else {
    sample_row_scalar(job, x + i, y + i, destination + i * bytes, count - i);
  }
}

// Whether the distance of any two samples fits 32 bits.
bool is_near(const SampleSource& source) noexcept {
  constexpr int64_t most = INT32_MAX / 2;
  return source.stride <= most && -source.stride <= most && std::abs(int64_t{source.stride}) * source.height <= most;
}

}  // namespace

BISEAM_AVX2 void sample_row_avx2(const SampleJob& job, const int32_t* x, const int32_t* y, void* destination,
                                 int count) noexcept {
  uint8_t* bytes = static_cast<uint8_t*>(destination);
  if (!is_near(job.source)) return sample_row_scalar(job, x, y, destination, count);
  switch (job.source.type) {
    case SampleType::bytes:
      return sample_type<SampleType::bytes>(job, x, y, bytes, count);
    case SampleType::byte_pairs:
      return sample_type<SampleType::byte_pairs>(job, x, y, bytes, count);
    case SampleType::words:
      return sample_type<SampleType::words>(job, x, y, bytes, count);
    case SampleType::word_pairs:
      return sample_type<SampleType::word_pairs>(job, x, y, bytes, count);
  }
}

}  // namespace biseam

#endif
