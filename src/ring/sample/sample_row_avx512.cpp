#include "base/intrinsics.hpp"
#include "ring/sample/sample_row_kernels.hpp"

#if defined(BISEAM_X86_64)

#include <algorithm>
#include <cstdlib>
#include <cstring>

#define BISEAM_STEP [[gnu::always_inline]] BISEAM_AVX512 inline

// Sixteen lanes of 32 bits.  Neighbouring positions name neighbouring samples, so a window is laid over the picture in which
// the taps of all lanes lie; its rows are loaded whole, and the taps are taken out of registers byte by byte, which costs a
// fraction of a load for each.  Positions that go with the picture's rows share a window of 32 bytes by 4 first rows; steeper
// ones have one of 16 bytes by 8 for each half of the lanes.  What fits neither is gathered (avx2).
namespace biseam::ring {

namespace {

constexpr int kLanes = 16;

// What a lane is: a sample of bytes, a component of a pair of bytes, or half the taps of a word's component.
template <SampleType type>
struct Shape {
  static constexpr int kUnit = bytes_of(type);  // of a column
  static constexpr int kLanesEach = kUnit, kSamples = kLanes / kLanesEach;
};

BISEAM_STEP __m512i all(int32_t value) { return _mm512_set1_epi32(value); }

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

template <SampleType type>
BISEAM_STEP __m512i load_positions(const int32_t* at) {
  switch (Shape<type>::kLanesEach) {
    case 1:
      return _mm512_loadu_si512(at);
    case 2:
      return _mm512_permutexvar_epi32(_mm512_setr_epi32(0, 0, 1, 1, 2, 2, 3, 3, 4, 4, 5, 5, 6, 6, 7, 7),
                                      _mm512_castsi256_si512(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(at))));
    default:
      return _mm512_permutexvar_epi32(_mm512_setr_epi32(0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3),
                                      _mm512_castsi128_si512(_mm_loadu_si128(reinterpret_cast<const __m128i*>(at))));
  }
}

// An axis' positions: first taps and phases of all lanes.
struct Places {
  __m512i first, phase;
};

BISEAM_STEP Places place_all(const AxisWeights& axis, __m512i positions) {
  const int below = 16 - axis.phase_bits;
  const __m512i rounded = _mm512_add_epi32(positions, all(1 << (below - 1)));
  return {_mm512_sub_epi32(_mm512_srai_epi32(rounded, 16), all(axis.before)),
          _mm512_and_si512(_mm512_srl_epi32(rounded, _mm_cvtsi32_si128(below)), all(axis.phases() - 1))};
}

BISEAM_STEP __m512i look_up_32(const int32_t* table, __m512i phase) {
  return _mm512_permutex2var_epi32(_mm512_load_si512(table), phase, _mm512_load_si512(table + 16));
}

BISEAM_STEP __m512i look_up_64(const int32_t* table, __m512i phase) {
  const __mmask16 upper = _mm512_test_epi32_mask(phase, all(32));
  return _mm512_mask_blend_epi32(upper, look_up_32(table, phase), look_up_32(table + 32, phase));
}

// Tables of 64 or 128 phases are read whole: that is faster than a gather.
template <int phases>
BISEAM_STEP __m512i look_up(const int32_t* table, __m512i phase) {
  if constexpr (phases == 64) return look_up_64(table, phase);
  const __mmask16 upper = _mm512_test_epi32_mask(phase, all(64));
  return _mm512_mask_blend_epi32(upper, look_up_64(table, phase), look_up_64(table + 64, phase));
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

struct Ends {
  int low, high;
};

BISEAM_STEP Ends ends_of(const AxisWeights& axis, int32_t a, int32_t b) {
  const int first = place_on(axis, a).first, last = place_on(axis, b).first;
  return {std::min(first, last), std::max(first, last)};
}

BISEAM_STEP Corner corner_of(const SampleJob& job, int32_t x, int32_t y, int32_t last_x, int32_t last_y) {
  return {ends_of(*job.across, x, last_x).low, ends_of(*job.down, y, last_y).low};
}

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

// rows[k]: rows k to k + 3.
template <int count>
BISEAM_STEP Fours<count> load_fours(const uint8_t* window, std::ptrdiff_t stride) {
  Fours<count> fours;
  constexpr int last = (count + 2) / 4 * 4, left = count + 3 - last;
  __m512i whole[last / 4 + 1];
  for (int k = 0; k < last; k += 4) whole[k / 4] = load_4x16<4>(window + k * stride, stride);
  whole[last / 4] = load_4x16<left>(window + last * stride, stride);
  for (int k = 0; k < count; ++k) {
    const __m512i low = whole[k / 4], high = whole[std::min(k / 4 + 1, last / 4)];
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

template <SampleType type, int taps>
struct Weights {
  static constexpr int kPhases = taps == 2 ? 64 : 128, kChunks = Taps<type, taps>::kChunks;
  __m512i across[kChunks][2];  // bytes: both parts; words: the first alone
  __m512i down[taps / 2];
};

template <SampleType type, int taps>
BISEAM_STEP Weights<type, taps> look_up_all(const SampleJob& job, __m512i columns, __m512i rows) {
  constexpr int phases = Weights<type, taps>::kPhases;
  Weights<type, taps> weights;
  for (int c = 0; c < weights.kChunks; ++c) {
    const int32_t *quads = job.across->quads + 2 * c * phases, *pairs = job.across->pairs + 2 * c * phases;
    if constexpr (is_words(type)) {
      weights.across[c][0] =
          _mm512_mask_blend_epi32(0xAAAA, look_up<phases>(pairs, columns), look_up<phases>(pairs + phases, columns));
    } else {
      weights.across[c][0] = look_up<phases>(quads, columns);
      // With 64 phases between two samples weights are multiples of 128.
      if constexpr (taps > 2) weights.across[c][1] = look_up<phases>(quads + phases, columns);
    }
  }
  for (int k = 0; k < taps / 2; ++k) weights.down[k] = look_up<phases>(job.down->pairs + k * phases, rows);
  return weights;
}

// The first sum, before its rounding.
template <SampleType type, int taps>
BISEAM_STEP __m512i weigh_across(const SampleSource& source, const Weights<type, taps>& weights, const __m512i* picked) {
  __m512i sum = all(1 << (across_shift(source) - 1));
  for (int c = 0; c < weights.kChunks; ++c) {
    if constexpr (is_words(type)) {
      const __m512i shifted = _mm512_srl_epi16(picked[c], _mm_cvtsi32_si128(source.shift));
      const __m512i values = _mm512_min_epu16(shifted, _mm512_set1_epi16(static_cast<int16_t>((1 << source.bits) - 1)));
      const __m512i half = _mm512_madd_epi16(values, weights.across[c][0]);
      sum = _mm512_add_epi32(sum, _mm512_add_epi32(half, _mm512_shuffle_epi32(half, _MM_PERM_CDAB)));
    } else {
      const __m512i high = _mm512_maddubs_epi16(picked[c], weights.across[c][0]);
      sum = _mm512_add_epi32(sum, _mm512_madd_epi16(high, _mm512_set1_epi16(128)));
      if constexpr (taps > 2) {
        const __m512i low = _mm512_maddubs_epi16(picked[c], weights.across[c][1]);
        sum = _mm512_add_epi32(sum, _mm512_madd_epi16(low, _mm512_set1_epi16(1)));
      }
    }
  }
  return sum;
}

// Two rows' first sums, rounded, as the halves of each lane.
template <SampleType type, int taps>
BISEAM_STEP __m512i two_rows(const SampleSource& source, const Weights<type, taps>& weights, const Taps<type, taps>& picked,
                             int row) {
  if constexpr (taps == 2 && !is_words(type)) {  // whole already, and in the lower half
    const __m512i upper = _mm512_maddubs_epi16(picked.row[row][0], weights.across[0][0]);
    const __m512i lower = _mm512_maddubs_epi16(picked.row[row + 1][0], weights.across[0][0]);
    return _mm512_mask_blend_epi16(0xAAAAAAAA, upper, _mm512_slli_epi32(lower, 16));
  } else {
    const int shift = is_words(type) ? across_shift(source) : kTapBits + 8 - kFineBits;
    const __m512i upper = weigh_across<type, taps>(source, weights, picked.row[row]);
    const __m512i lower = weigh_across<type, taps>(source, weights, picked.row[row + 1]);
    return _mm512_mask_blend_epi16(0xAAAAAAAA, _mm512_srl_epi32(upper, _mm_cvtsi32_si128(shift)),
                                   _mm512_sll_epi32(lower, _mm_cvtsi32_si128(16 - shift)));
  }
}

template <SampleType type>
BISEAM_STEP void store(const SampleJob& job, __m512i sum, uint8_t* destination) {
  const Finish finish(job);
  const __m512i rounded = _mm512_sra_epi32(_mm512_add_epi32(sum, all(finish.half)), _mm_cvtsi32_si128(finish.shift));
  const __m512i values = _mm512_min_epi32(_mm512_max_epi32(rounded, all(finish.low)), all(finish.high));
  if constexpr (is_words(type)) {  // every second lane repeats the one before
    const __m256i halves = _mm256_sll_epi32(_mm512_cvtepi64_epi32(values), _mm_cvtsi32_si128(finish.up));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(destination), _mm256_cvtepi32_epi16(halves));
  } else if (job.output == SampleOutput::fine) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(destination), _mm512_cvtepi32_epi16(values));
  } else {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(destination), _mm512_cvtepi32_epi8(values));
  }
}

BISEAM_STEP __mmask16 within(__m512i column, __m512i row, int columns, int rows) {
  return _mm512_mask_cmplt_epu32_mask(_mm512_cmplt_epu32_mask(column, all(columns)), row, all(rows));
}

template <SampleType type, int taps>
BISEAM_STEP void finish_lanes(const SampleJob& job, const Taps<type, taps>& picked, __m512i columns, __m512i rows,
                              uint8_t* destination) {
  const Weights<type, taps> weights = look_up_all<type, taps>(job, columns, rows);
  __m512i sum = _mm512_setzero_si512();
  for (int k = 0; k < taps; k += 2) {
    const __m512i both = two_rows<type, taps>(job.source, weights, picked, k);
    sum = _mm512_add_epi32(sum, _mm512_madd_epi16(both, weights.down[k / 2]));
  }
  store<type>(job, sum, destination);
}

template <SampleType type, int taps>
BISEAM_STEP bool sample_flat(const SampleJob& job, Corner corner, const Places& columns, const Places& rows,
                             uint8_t* destination) {
  using W = Window<type, taps>;
  constexpr int width = W::kFlatBytes / Shape<type>::kUnit, room = (W::kFlatBytes - W::kReach) / Shape<type>::kUnit + 1;
  const SampleSource& source = job.source;
  corner = {std::min(corner.column, source.width - width), std::min(corner.row, source.height - (taps + W::kFlatRows - 1))};
  if (corner.column < 0 || corner.row < 0) return false;
  const __m512i column = _mm512_sub_epi32(columns.first, all(corner.column));
  const __m512i row = _mm512_sub_epi32(rows.first, all(corner.row));
  if (within(column, row, room, W::kFlatRows) != 0xFFFF) return false;
  const uint8_t* window = source.first + corner.row * source.stride + std::ptrdiff_t{corner.column} * Shape<type>::kUnit;
  ask_for_row(window, source.stride, taps + W::kFlatRows + 4);
  const auto picked = pick_flat<type, taps>(window, source.stride, byte_indices<type, W::kFlatBytes>(column, row));
  finish_lanes<type, taps>(job, picked, columns.phase, rows.phase, destination);
  return true;
}

template <SampleType type, int taps>
BISEAM_STEP bool sample_steep(const SampleJob& job, Corner left, Corner right, const Places& columns, const Places& rows,
                              uint8_t* destination) {
  using W = Window<type, taps>;
  constexpr int width = W::kSteepBytes / Shape<type>::kUnit, room = (W::kSteepBytes - W::kReach) / Shape<type>::kUnit + 1;
  const SampleSource& source = job.source;
  const int last_column = source.width - width, last_row = source.height - (taps + W::kSteepRows - 1);
  left = {std::min(left.column, last_column), std::min(left.row, last_row)};
  right = {std::min(right.column, last_column), std::min(right.row, last_row)};
  if ((left.column | left.row | right.column | right.row) < 0) return false;
  const __m512i corner_column = _mm512_mask_blend_epi32(0xFF00, all(left.column), all(right.column));
  const __m512i corner_row = _mm512_mask_blend_epi32(0xFF00, all(left.row), all(right.row));
  const __m512i column = _mm512_sub_epi32(columns.first, corner_column), row = _mm512_sub_epi32(rows.first, corner_row);
  if (within(column, row, room, W::kSteepRows) != 0xFFFF) return false;
  const auto window = [&source](Corner corner) {
    return source.first + corner.row * source.stride + std::ptrdiff_t{corner.column} * Shape<type>::kUnit;
  };
  const auto picked =
      pick_steep<type, taps>(window(left), window(right), source.stride, byte_indices<type, W::kSteepBytes>(column, row));
  finish_lanes<type, taps>(job, picked, columns.phase, rows.phase, destination);
  return true;
}

template <SampleType type, int taps>
BISEAM_STEP bool sample_lanes(const SampleJob& job, const int32_t* x, const int32_t* y, uint8_t* destination) {
  using W = Window<type, taps>;
  constexpr int samples = Shape<type>::kSamples, unit = Shape<type>::kUnit;
  const Places columns = place_all(*job.across, load_positions<type>(x));
  const Places rows = place_all(*job.down, load_positions<type>(y));
  const Ends column = ends_of(*job.across, x[0], x[samples - 1]), row = ends_of(*job.down, y[0], y[samples - 1]);
  if ((column.high - column.low) * unit + W::kReach <= W::kFlatBytes && row.high - row.low < W::kFlatRows) {
    return sample_flat<type, taps>(job, {column.low, row.low}, columns, rows, destination);
  }
  if constexpr (W::kReach <= W::kSteepBytes) {
    constexpr int half = samples / 2;
    const Corner left = corner_of(job, x[0], y[0], x[half - 1], y[half - 1]);
    const Corner right = corner_of(job, x[half], y[half], x[samples - 1], y[samples - 1]);
    return sample_steep<type, taps>(job, left, right, columns, rows, destination);
  }
  return false;
}

template <SampleType type, int taps>
BISEAM_AVX512 void sample_type(const SampleJob& job, const int32_t* x, const int32_t* y, uint8_t* destination, int count) {
  constexpr int samples = Shape<type>::kSamples;
  const int bytes = output_bytes_of(type, job.output);
  int i = 0;
  for (; i + samples <= count; i += samples) {
    if (!sample_lanes<type, taps>(job, x + i, y + i, destination + i * bytes)) {
      sample_row_avx2(job, x + i, y + i, destination + i * bytes, samples);
    }
  }
  if (i == count) return;
  // The rest with its last position repeated.
  int32_t last_x[samples], last_y[samples];
  uint8_t results[sizeof(__m256i)];
  for (int k = 0; k < samples; ++k) last_x[k] = x[std::min(i + k, count - 1)], last_y[k] = y[std::min(i + k, count - 1)];
  if (sample_lanes<type, taps>(job, last_x, last_y, results)) {
    std::memcpy(destination + i * bytes, results, static_cast<std::size_t>((count - i) * bytes));
  } else {
    sample_row_avx2(job, x + i, y + i, destination + i * bytes, count - i);
  }
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

// Kernels that are widened along an axis are gathered.
BISEAM_AVX512 void sample_row_avx512(const SampleJob& job, const int32_t* x, const int32_t* y, void* destination,
                                     int count) noexcept {
  uint8_t* bytes = static_cast<uint8_t*>(destination);
  const AxisWeights& kernel = *job.across;
  if (&kernel == job.down && kernel.phase_bits == 6) return sample_taps<2>(job, x, y, bytes, count);
  if (&kernel == job.down && kernel.phase_bits == 7) {
    return kernel.taps == 4 ? sample_taps<4>(job, x, y, bytes, count) : sample_taps<6>(job, x, y, bytes, count);
  }
  sample_row_avx2(job, x, y, destination, count);
}

}  // namespace biseam::ring

#endif
