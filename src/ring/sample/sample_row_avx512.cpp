#include "base/intrinsics.hpp"
#include "ring/sample/sample_row_kernels.hpp"
#include "ring/sample/windows_avx512.hpp"

#if defined(BISEAM_X86_64)

#include <algorithm>

// Sixteen lanes of 32 bits.  Neighbouring positions name neighbouring samples, so a window is laid over the picture in which
// the taps of all lanes lie; its rows are loaded whole, and the taps are taken out of registers byte by byte, which costs a
// fraction of a load for each.  Positions that go with the picture's rows share a window of 32 bytes by 4 first rows; steeper
// ones have one of 16 bytes by 8 for each half of the lanes.  What fits neither is gathered (avx2).
namespace biseam::ring {

namespace {

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

// What a run of lanes needs to know of its job.  A copy: results are bytes, which might lie in the job as far as compilers
// know.
template <int taps, SampleOutput output>
struct Kernel {
  SampleSource source;
  const int8_t* parts;
  Finish finish;

  BISEAM_STEP explicit Kernel(const SampleJob& job) : source(job.source), parts(job.across->parts), finish(job) {}
};

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

template <SampleType type, int taps, SampleOutput output>
BISEAM_STEP void store(const Kernel<taps, output>& kernel, __m512i sum, uint8_t* destination) {
  if constexpr (is_words(type)) {  // every second lane repeats the one before
    const Finish& finish = kernel.finish;
    const __m512i rounded = _mm512_sra_epi32(_mm512_add_epi32(sum, all(finish.half)), _mm_cvtsi32_si128(finish.shift));
    const __m512i values = _mm512_min_epi32(_mm512_max_epi32(rounded, all(finish.low)), all(finish.high));
    const __m256i halves = _mm256_sll_epi32(_mm512_cvtepi64_epi32(values), _mm_cvtsi32_si128(finish.up));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(destination), _mm256_cvtepi32_epi16(halves));
    return;
  }
  constexpr bool fine = output == SampleOutput::fine;
  constexpr int shift = kTapBits + (fine ? 0 : kFineBits - 8);
  const __m512i rounded = _mm512_srai_epi32(_mm512_add_epi32(sum, all(1 << (shift - 1))), shift);
  if constexpr (fine) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(destination), _mm512_cvtsepi32_epi16(rounded));
  } else {
    const __m512i positive = _mm512_max_epi32(rounded, _mm512_setzero_si512());
    _mm_storeu_si128(reinterpret_cast<__m128i*>(destination), _mm512_cvtusepi32_epi8(positive));
  }
}

BISEAM_STEP __mmask16 within(__m512i column, __m512i row, int columns, int rows) {
  return _mm512_mask_cmplt_epu32_mask(_mm512_cmplt_epu32_mask(column, all(columns)), row, all(rows));
}

// Positions, rounded to phases.
struct Places {
  __m512i x, y;
};

template <SampleType type, int taps, SampleOutput output>
BISEAM_STEP void finish_lanes(const Kernel<taps, output>& kernel, const Taps<type, taps>& picked, const Places& places,
                              uint8_t* destination) {
  const auto weights = look_up_all<type, taps>(kernel.parts, phases_of<taps>(places.x), phases_of<taps>(places.y));
  __m512i sum = _mm512_setzero_si512();
  for (int k = 0; k < taps; k += 2) {
    const __m512i upper = weigh_across<type, taps>(kernel.source, weights, picked.row[k]);
    const __m512i lower = weigh_across<type, taps>(kernel.source, weights, picked.row[k + 1]);
    const __m512i both = _mm512_mask_blend_epi16(0xAAAAAAAA, upper, _mm512_slli_epi32(lower, 16));
    sum = _mm512_dpwssd_epi32(sum, both, weights.down[k / 2]);
  }
  store<type>(kernel, sum, destination);
}

// How a row's positions go.  They hardly bend within one, so that all of its vectors are sampled alike.
struct Course {
  bool flat;                // vectors fit flat windows
  bool backwards, upwards;  // the window's corner lies at the last lane's column, or row
};

template <SampleType type, int taps>
BISEAM_STEP Course course_of(const int32_t* x, const int32_t* y, int count) {
  if (count == 0) return {};
  using W = Window<type, taps>;
  constexpr int columns = (W::kFlatBytes - W::kReach) / Shape<type>::kUnit, rows = W::kFlatRows - 1;
  const int64_t across = int64_t{x[count - 1]} - x[0], down = int64_t{y[count - 1]} - y[0];
  const int64_t steps = count - 1, room = steps << 16, lanes = Shape<type>::kSamples - 1;
  return {std::max(across, -across) * lanes <= room * columns && std::max(down, -down) * lanes <= room * rows, across < 0,
          down < 0};
}

template <SampleType type>
BISEAM_STEP Places places_of(const int32_t* x, const int32_t* y, int half_phase) {
  return {_mm512_add_epi32(load_positions<type>(x), all(half_phase)),
          _mm512_add_epi32(load_positions<type>(y), all(half_phase))};
}

// The corner of the window of lanes first to last.
template <int taps>
BISEAM_STEP Corner corner_of(const int32_t* x, const int32_t* y, int first, int last, const Course& course) {
  return {Phases<taps>::first_of(x[course.backwards ? last : first]), Phases<taps>::first_of(y[course.upwards ? last : first])};
}

template <SampleType type, int taps, SampleOutput output>
BISEAM_STEP bool sample_flat(const Kernel<taps, output>& kernel, const int32_t* x, const int32_t* y, const Course& course,
                             uint8_t* destination) {
  using W = Window<type, taps>;
  constexpr int width = W::kFlatBytes / Shape<type>::kUnit, room = (W::kFlatBytes - W::kReach) / Shape<type>::kUnit + 1;
  constexpr int before = Phases<taps>::kBefore;
  const SampleSource& source = kernel.source;
  Corner corner = corner_of<taps>(x, y, 0, Shape<type>::kSamples - 1, course);
  corner = {std::min(corner.column, source.width - width), std::min(corner.row, source.height - (taps + W::kFlatRows - 1))};
  if ((corner.column | corner.row) < 0) return false;
  const Places places = places_of<type>(x, y, Phases<taps>::kHalf);
  const __m512i column = _mm512_sub_epi32(_mm512_srai_epi32(places.x, 16), all(corner.column + before));
  const __m512i row = _mm512_sub_epi32(_mm512_srai_epi32(places.y, 16), all(corner.row + before));
  if (within(column, row, room, W::kFlatRows) != 0xFFFF) return false;
  const uint8_t* window = source.first + corner.row * source.stride + std::ptrdiff_t{corner.column} * Shape<type>::kUnit;
  ask_for_row(window, source.stride, taps + W::kFlatRows + 4);
  const auto picked = pick_flat<type, taps>(window, source.stride, byte_indices<type, W::kFlatBytes>(column, row));
  finish_lanes(kernel, picked, places, destination);
  return true;
}

template <SampleType type, int taps, SampleOutput output>
BISEAM_STEP bool sample_steep(const Kernel<taps, output>& kernel, const int32_t* x, const int32_t* y, const Course& course,
                              uint8_t* destination) {
  using W = Window<type, taps>;
  if constexpr (W::kReach > W::kSteepBytes) return false;
  constexpr int width = W::kSteepBytes / Shape<type>::kUnit, room = (W::kSteepBytes - W::kReach) / Shape<type>::kUnit + 1;
  constexpr int samples = Shape<type>::kSamples, half = samples / 2, before = Phases<taps>::kBefore;
  const SampleSource& source = kernel.source;
  const int last_column = source.width - width, last_row = source.height - (taps + W::kSteepRows - 1);
  Corner left = corner_of<taps>(x, y, 0, half - 1, course), right = corner_of<taps>(x, y, half, samples - 1, course);
  left = {std::min(left.column, last_column), std::min(left.row, last_row)};
  right = {std::min(right.column, last_column), std::min(right.row, last_row)};
  if ((left.column | left.row | right.column | right.row) < 0) return false;
  const Places places = places_of<type>(x, y, Phases<taps>::kHalf);
  const __m512i corner_column = _mm512_mask_blend_epi32(0xFF00, all(left.column + before), all(right.column + before));
  const __m512i corner_row = _mm512_mask_blend_epi32(0xFF00, all(left.row + before), all(right.row + before));
  const __m512i column = _mm512_sub_epi32(_mm512_srai_epi32(places.x, 16), corner_column);
  const __m512i row = _mm512_sub_epi32(_mm512_srai_epi32(places.y, 16), corner_row);
  if (within(column, row, room, W::kSteepRows) != 0xFFFF) return false;
  const auto window = [&source](Corner corner) {
    return source.first + corner.row * source.stride + std::ptrdiff_t{corner.column} * Shape<type>::kUnit;
  };
  const auto picked =
      pick_steep<type, taps>(window(left), window(right), source.stride, byte_indices<type, W::kSteepBytes>(column, row));
  finish_lanes(kernel, picked, places, destination);
  return true;
}

// Where the row as a whole has misled about a vector.
template <SampleType type, int taps, SampleOutput output>
BISEAM_AVX512 bool sample_alone(const SampleJob& job, const int32_t* x, const int32_t* y, uint8_t* destination) noexcept {
  const Kernel<taps, output> kernel(job);
  const Course course = course_of<type, taps>(x, y, Shape<type>::kSamples);
  return course.flat ? sample_flat<type>(kernel, x, y, course, destination)
                     : sample_steep<type>(kernel, x, y, course, destination);
}

template <SampleType type, int taps, SampleOutput output>
BISEAM_AVX512 void sample_output(const SampleJob& job, const int32_t* x, const int32_t* y, uint8_t* destination, int count) {
  constexpr int samples = Shape<type>::kSamples, bytes = output_bytes_of(type, output);
  const VectorKernel alone{sample_alone<type, taps, output>, samples, sample_row_avx2};
  const Kernel<taps, output> kernel(job);
  const Course course = course_of<type, taps>(x, y, count);
  int i = 0;
  if (course.flat) {
    for (; i + samples <= count; i += samples) {
      if (sample_flat<type>(kernel, x + i, y + i, course, destination + i * bytes)) continue;
      sample_rest(alone, job, x + i, y + i, destination + i * bytes, samples);
    }
  } else {
    for (; i + samples <= count; i += samples) {
      if (sample_steep<type>(kernel, x + i, y + i, course, destination + i * bytes)) continue;
      sample_rest(alone, job, x + i, y + i, destination + i * bytes, samples);
    }
  }
  if (i < count) sample_rest(alone, job, x + i, y + i, destination + i * bytes, count - i);
}

template <SampleType type, int taps>
BISEAM_STEP void sample_type(const SampleJob& job, const int32_t* x, const int32_t* y, uint8_t* destination, int count) {
  if (job.output == SampleOutput::fine) {
    sample_output<type, taps, SampleOutput::fine>(job, x, y, destination, count);
  } else {
    sample_output<type, taps, SampleOutput::samples>(job, x, y, destination, count);
  }
}

template <int taps>
BISEAM_STEP void sample_words(const SampleJob& job, const int32_t* x, const int32_t* y, uint8_t* destination, int count) {
  if (is_pairs(job.source.type)) {
    sample_type<SampleType::word_pairs, taps>(job, x, y, destination, count);
  } else {
    sample_type<SampleType::words, taps>(job, x, y, destination, count);
  }
}

template <int taps>
BISEAM_STEP void sample_taps(const SampleJob& job, const int32_t* x, const int32_t* y, uint8_t* destination, int count) {
  switch (job.source.type) {
    case SampleType::bytes:
      return sample_type<SampleType::bytes, taps>(job, x, y, destination, count);
    case SampleType::byte_pairs:
      return sample_type<SampleType::byte_pairs, taps>(job, x, y, destination, count);
    default:
      return sample_words<taps>(job, x, y, destination, count);
  }
}

}  // namespace

BISEAM_AVX512 void sample_row_avx512(const SampleJob& job, const int32_t* x, const int32_t* y, void* destination,
                                     int count) noexcept {
  uint8_t* bytes = static_cast<uint8_t*>(destination);
  const AxisWeights& kernel = *job.across;
  // Bytes between two samples are sampled in tiles.
  if (&kernel == job.down && kernel.phase_bits == 6 && is_words(job.source.type))
    return sample_words<2>(job, x, y, bytes, count);
  if (&kernel == job.down && kernel.phase_bits == 7) {
    return kernel.taps == 4 ? sample_taps<4>(job, x, y, bytes, count) : sample_taps<6>(job, x, y, bytes, count);
  }
  // So few taps would leave most of a vector empty.
  const bool few = kernel.taps <= 4 && job.down->taps <= 4;
  if (few || !sample_widened_avx512(job, x, y, bytes, count)) sample_row_avx2(job, x, y, destination, count);
}

}  // namespace biseam::ring

#endif
