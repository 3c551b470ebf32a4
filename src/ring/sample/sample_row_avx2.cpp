#include "base/intrinsics.hpp"
#include "ring/sample/sample_row_kernels.hpp"

#if defined(BISEAM_X86_64)

#include <algorithm>
#include <cstdlib>
#include <cstring>

#define BISEAM_STEP BISEAM_INLINED BISEAM_AVX2

// Eight lanes of 32 bits are eight samples, or both components of four pairs.  Neighbouring positions name neighbouring
// samples: each half of the lanes has a window of 16 bytes by some rows, from which the taps of all its lanes are taken by
// shuffling the rows' bytes.  Where no window fits, taps are gathered: four bytes or two words at a time.
namespace biseam::ring {

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

// Four weights of each lane: of lanes 0, 1, 4, 5 and of lanes 2, 3, 6, 7.
struct FourWeights {
  __m256i near, far;
};

BISEAM_STEP __m128i load_two(const int16_t* a, const int16_t* b) {
  return _mm_unpacklo_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(a)),
                            _mm_loadl_epi64(reinterpret_cast<const __m128i*>(b)));
}

BISEAM_STEP FourWeights load_weights(const AxisWeights& axis, const int32_t* phases, int tap) {
  const auto row = [&axis, phases, tap](int lane) { return axis.words + phases[lane] * axis.padded_taps + tap; };
  return {_mm256_setr_m128i(load_two(row(0), row(1)), load_two(row(4), row(5))),
          _mm256_setr_m128i(load_two(row(2), row(3)), load_two(row(6), row(7)))};
}

// Of each lane the first two, or the other two.
struct TwoPairs {
  __m256i first, second;
};

BISEAM_STEP TwoPairs pairs_of(const FourWeights& weights) {
  const __m256 near = _mm256_castsi256_ps(weights.near), far = _mm256_castsi256_ps(weights.far);
  return {_mm256_castps_si256(_mm256_shuffle_ps(near, far, 0x88)), _mm256_castps_si256(_mm256_shuffle_ps(near, far, 0xDD))};
}

// In parts of 8 bits: weight = 128 * first + second.
BISEAM_STEP TwoPairs parts_of(const FourWeights& weights) {
  const __m256i half = _mm256_set1_epi16(64);
  const __m256i near = _mm256_srai_epi16(_mm256_add_epi16(weights.near, half), 7);
  const __m256i far = _mm256_srai_epi16(_mm256_add_epi16(weights.far, half), 7);
  return {_mm256_packs_epi16(near, far), _mm256_packs_epi16(_mm256_sub_epi16(weights.near, _mm256_slli_epi16(near, 7)),
                                                            _mm256_sub_epi16(weights.far, _mm256_slli_epi16(far, 7)))};
}

// Weights across for four taps after four: parts for bytes, pairs for words.
constexpr int kMostFours = 32;
struct AcrossWeights {
  TwoPairs fours[kMostFours];
};

template <SampleType type>
BISEAM_STEP void load_across(const AxisWeights& axis, __m256i phases, AcrossWeights& across) {
  alignas(32) int32_t each[kLanes];
  _mm256_store_si256(reinterpret_cast<__m256i*>(each), phases);
  for (int k = 0; k < axis.taps; k += 4) {
    const FourWeights weights = load_weights(axis, each, k);
    if constexpr (is_words(type)) {
      across.fours[k / 4] = pairs_of(weights);
    } else {
      across.fours[k / 4] = parts_of(weights);
    }
  }
}

// Chunk c of all lanes' taps times their weights.  Between two samples these are multiples of 128, so not in parts.
template <SampleType type>
BISEAM_STEP __m256i weigh_taps(const SampleSource& source, __m256i taps, const AcrossWeights& across, int c, bool in_parts) {
  if constexpr (is_words(type)) {
    const __m256i shifted = _mm256_srl_epi16(taps, _mm_cvtsi32_si128(source.shift));
    const __m256i values = _mm256_min_epu16(shifted, _mm256_set1_epi16(static_cast<int16_t>((1 << source.bits) - 1)));
    const TwoPairs& pairs = across.fours[c / 2];
    return _mm256_madd_epi16(values, c % 2 == 0 ? pairs.first : pairs.second);
  } else {
    const __m256i high = _mm256_maddubs_epi16(taps, across.fours[c].first);
    const __m256i large = _mm256_madd_epi16(high, _mm256_set1_epi16(128));
    if (!in_parts) return large;
    const __m256i low = _mm256_maddubs_epi16(taps, across.fours[c].second);
    return _mm256_add_epi32(large, _mm256_madd_epi16(low, _mm256_set1_epi16(1)));
  }
}

// Taps by gathering, from wherever the lanes' first ones are.
template <SampleType type>
struct Gathered {
  const uint8_t* base;
  std::ptrdiff_t stride;
  __m256i offsets;

  BISEAM_STEP __m256i taps(int row, int c) const {
    return load_taps<type>(base + row * stride + std::ptrdiff_t{c} * (Shape<type>::kTapsAtOnce * bytes_of(type)), offsets);
  }
};

// Taps by shuffling: each row for each place that a lane's first row can have.
template <SampleType type, int places, int rows_>
struct Shuffled {
  __m256i rows[places + rows_ - 1];
  __m256i indices[places];  // of a lane whose first row is elsewhere: nothing

  BISEAM_STEP __m256i taps(int row, int c) const {
    const __m256i ahead = _mm256_set1_epi8(static_cast<char>(c * Shape<type>::kTapsAtOnce * bytes_of(type)));
    __m256i taken = _mm256_setzero_si256();
    for (int k = 0; k < places; ++k) {
      const __m256i index = c == 0 ? indices[k] : _mm256_add_epi8(indices[k], ahead);
      taken = _mm256_or_si256(taken, _mm256_shuffle_epi8(rows[row + k], index));
    }
    return taken;
  }
};

template <SampleType type, class Picked>
BISEAM_STEP __m256i sum_across(const SampleJob& job, const Picked& picked, int row, const AcrossWeights& across, int taps) {
  const int shift = across_shift(job.source);
  __m256i sum = all(1 << (shift - 1));
  for (int c = 0; c * Shape<type>::kTapsAtOnce < taps; ++c) {
    sum = _mm256_add_epi32(sum, weigh_taps<type>(job.source, picked.taps(row, c), across, c, taps > 2));
  }
  return _mm256_sra_epi32(sum, _mm_cvtsi32_si128(shift));
}

template <SampleType type, class Picked>
BISEAM_STEP __m256i two_rows(const SampleJob& job, const Picked& picked, int row, const AcrossWeights& across, int taps) {
  const __m256i upper = sum_across<type>(job, picked, row, across, taps);
  const __m256i lower = sum_across<type>(job, picked, row + 1, across, taps);
  return _mm256_blend_epi16(upper, _mm256_slli_epi32(lower, 16), 0xAA);
}

// taps: of both axes.
template <SampleType type, class Picked>
BISEAM_STEP __m256i sum_both(const SampleJob& job, const Picked& picked, __m256i columns, __m256i rows, int across_taps,
                             int down_taps) {
  AcrossWeights across;
  load_across<type>(*job.across, columns, across);
  alignas(32) int32_t each[kLanes];
  _mm256_store_si256(reinterpret_cast<__m256i*>(each), rows);
  __m256i sum = _mm256_setzero_si256();
  TwoPairs down;
  for (int k = 0; k < down_taps; k += 2) {
    if (k % 4 == 0) down = pairs_of(load_weights(*job.down, each, k));
    const __m256i both = two_rows<type>(job, picked, k, across, across_taps);
    sum = _mm256_add_epi32(sum, _mm256_madd_epi16(both, k % 4 == 0 ? down.first : down.second));
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
BISEAM_STEP bool sample_gathered(const SampleJob& job, const Places& columns, const Places& rows, uint8_t* destination) {
  constexpr int step = Shape<type>::kTapsAtOnce;
  const SampleSource& source = job.source;
  const int reach = (job.across->taps + step - 1) / step * step;
  if (!all_within(columns.first, source.width - reach) || !all_within(rows.first, source.height - job.down->taps)) return false;
  // From the first lane's row, so that the offsets fit 32 bits.
  const int top = _mm_cvtsi128_si32(_mm256_castsi256_si128(rows.first));
  const __m256i offsets =
      _mm256_add_epi32(_mm256_mullo_epi32(_mm256_sub_epi32(rows.first, all(top)), all(static_cast<int32_t>(source.stride))),
                       _mm256_mullo_epi32(columns.first, all(bytes_of(type))));
  const Gathered<type> picked{source.first + top * source.stride, source.stride, offsets};
  store(job, sum_both<type>(job, picked, columns.phase, rows.phase, job.across->taps, job.down->taps), destination);
  return true;
}

// Where a half of the lanes begins to read, and how many first rows it has, if its ends tell.
struct Half {
  int column, row, places;
};

BISEAM_STEP Half half_of(const SampleJob& job, const int32_t* x, const int32_t* y, int last) {
  const int x0 = place_on(*job.across, x[0]).first, x1 = place_on(*job.across, x[last]).first;
  const int y0 = place_on(*job.down, y[0]).first, y1 = place_on(*job.down, y[last]).first;
  return {std::min(x0, x1), std::min(y0, y1), std::abs(y0 - y1) + 1};
}

BISEAM_STEP __m256i halves(int32_t left, int32_t right) {
  return _mm256_setr_m128i(_mm_set1_epi32(left), _mm_set1_epi32(right));
}

BISEAM_STEP __m256i load_halves(const uint8_t* left, const uint8_t* right) {
  return _mm256_setr_m128i(_mm_loadu_si128(reinterpret_cast<const __m128i*>(left)),
                           _mm_loadu_si128(reinterpret_cast<const __m128i*>(right)));
}

// Brings what the row below will want near: a block's rows lie one below the other.  There may be nothing; nothing is read.
BISEAM_STEP void ask_for_row(const uint8_t* window, std::ptrdiff_t stride, int row) {
  const uintptr_t at = reinterpret_cast<uintptr_t>(window) + static_cast<uintptr_t>(stride) * static_cast<uintptr_t>(row);
  _mm_prefetch(reinterpret_cast<const char*>(at), _MM_HINT_T0);
}

// A lane's bytes of the first chunk, counted from its first tap's sample.
template <SampleType type>
BISEAM_STEP __m256i lane_bytes() {
  switch (type) {
    case SampleType::byte_pairs:
      return _mm256_set1_epi64x(0x0705030106040200);
    case SampleType::word_pairs:
      return _mm256_set1_epi64x(0x0706030205040100);
    default:
      return all(0x03020100);
  }
}

// All lanes, if they find their taps in two windows.
template <SampleType type, int taps, int places>
BISEAM_STEP bool sample_shuffled(const SampleJob& job, Half left, Half right, const Places& columns, const Places& rows,
                                 uint8_t* destination) {
  constexpr int unit = bytes_of(type), width = 16 / unit, room = width - taps;
  const SampleSource& source = job.source;
  const int last_column = source.width - width, last_row = source.height - (taps + places - 1);
  left.column = std::min(left.column, last_column), left.row = std::min(left.row, last_row);
  right.column = std::min(right.column, last_column), right.row = std::min(right.row, last_row);
  if ((left.column | left.row | right.column | right.row) < 0) return false;
  const __m256i column = _mm256_sub_epi32(columns.first, halves(left.column, right.column));
  const __m256i row = _mm256_sub_epi32(rows.first, halves(left.row, right.row));
  if (!all_within(column, room) || !all_within(row, places - 1)) return false;
  const __m256i spread = _mm256_setr_epi8(0, 0, 0, 0, 4, 4, 4, 4, 8, 8, 8, 8, 12, 12, 12, 12,  //
                                          0, 0, 0, 0, 4, 4, 4, 4, 8, 8, 8, 8, 12, 12, 12, 12);
  const __m256i indices =
      _mm256_add_epi8(_mm256_shuffle_epi8(_mm256_mullo_epi16(column, all(unit)), spread), lane_bytes<type>());
  Shuffled<type, places, taps> picked;
  for (int k = 0; k < places; ++k) {
    const __m256i elsewhere = _mm256_andnot_si256(_mm256_cmpeq_epi32(row, all(k)), _mm256_set1_epi8(static_cast<char>(0x80)));
    picked.indices[k] = _mm256_or_si256(indices, elsewhere);
  }
  const uint8_t* left_row = source.first + left.row * source.stride + std::ptrdiff_t{left.column} * unit;
  const uint8_t* right_row = source.first + right.row * source.stride + std::ptrdiff_t{right.column} * unit;
  ask_for_row(left_row, source.stride, taps + 8);
  for (int k = 0; k < places + taps - 1; ++k) {
    picked.rows[k] = load_halves(left_row + k * source.stride, right_row + k * source.stride);
  }
  store(job, sum_both<type>(job, picked, columns.phase, rows.phase, taps, taps), destination);
  return true;
}

// taps: of both axes; 0 where they differ or are many.
template <SampleType type, int taps>
BISEAM_STEP bool sample_lanes(const SampleJob& job, const int32_t* x, const int32_t* y, uint8_t* destination) {
  const Places columns = place_all(*job.across, load_positions<type>(x));
  const Places rows = place_all(*job.down, load_positions<type>(y));
  if constexpr (taps > 0 && taps * bytes_of(type) <= 16) {
    constexpr int half = Shape<type>::kSamples / 2;
    const Half left = half_of(job, x, y, half - 1), right = half_of(job, x + half, y + half, half - 1);
    const int places = std::max(left.places, right.places);
    if (places <= 2 && sample_shuffled<type, taps, 2>(job, left, right, columns, rows, destination)) return true;
    if (places > 2 && places <= 4 && sample_shuffled<type, taps, 4>(job, left, right, columns, rows, destination)) return true;
    if (places > 4 && sample_shuffled<type, taps, 8>(job, left, right, columns, rows, destination)) return true;
  }
  return sample_gathered<type>(job, columns, rows, destination);
}

template <SampleType type, int taps>
BISEAM_AVX2 void sample_type(const SampleJob& job, const int32_t* x, const int32_t* y, uint8_t* destination,
                             int count) noexcept {
  constexpr int samples = Shape<type>::kSamples;
  if (count < samples) return sample_rest(sample_type<type, taps>, samples, job, x, y, destination, count);
  const int bytes = output_bytes_of(type, job.output);
  for (int i = 0; i < count; i += samples) {
    i = std::min(i, count - samples);
    if (!sample_lanes<type, taps>(job, x + i, y + i, destination + i * bytes)) {
      sample_row_scalar(job, x + i, y + i, destination + i * bytes, samples);
    }
  }
}

// Whether the distance of any two samples fits 32 bits.
bool is_near(const SampleSource& source) noexcept {
  constexpr int64_t most = INT32_MAX / 2;
  return source.stride <= most && -source.stride <= most && std::abs(int64_t{source.stride}) * source.height <= most;
}

template <int taps>
BISEAM_STEP void sample_taps(const SampleJob& job, const int32_t* x, const int32_t* y, uint8_t* destination, int count) {
  switch (job.source.type) {
    case SampleType::bytes:
      return sample_type<SampleType::bytes, taps>(job, x, y, destination, count);
    case SampleType::byte_pairs:
      return sample_type<SampleType::byte_pairs, taps>(job, x, y, destination, count);
    case SampleType::words:
      return sample_type<SampleType::words, taps>(job, x, y, destination, count);
    case SampleType::word_pairs:
      return sample_type<SampleType::word_pairs, taps>(job, x, y, destination, count);
  }
}

}  // namespace

BISEAM_AVX2 void sample_row_avx2(const SampleJob& job, const int32_t* x, const int32_t* y, void* destination,
                                 int count) noexcept {
  uint8_t* bytes = static_cast<uint8_t*>(destination);
  if (!is_near(job.source)) return sample_row_scalar(job, x, y, destination, count);
  const int taps = job.across->taps == job.down->taps ? job.across->taps : 0;
  if (taps == 2) return sample_taps<2>(job, x, y, bytes, count);
  if (taps == 4) return sample_taps<4>(job, x, y, bytes, count);
  if (taps == 6) return sample_taps<6>(job, x, y, bytes, count);
  sample_taps<0>(job, x, y, bytes, count);
}

}  // namespace biseam::ring

#endif
