#include "base/intrinsics.hpp"
#include "ring/sample/sample_row_kernels.hpp"
#include "ring/sample/weights_avx512.hpp"
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
BISEAM_AVX512 bool sample_flat(const Kernel<taps, output>& kernel, const int32_t* x, const int32_t* y, const Course& course,
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
BISEAM_AVX512 bool sample_steep(const Kernel<taps, output>& kernel, const int32_t* x, const int32_t* y, const Course& course,
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

template <SampleType type, int taps, SampleOutput output>
BISEAM_AVX512 void sample_output(const SampleJob& job, const int32_t* x, const int32_t* y, uint8_t* destination,
                                 int count) noexcept {
  constexpr int samples = Shape<type>::kSamples, bytes = output_bytes_of(type, output);
  if (count < samples) return sample_rest(sample_output<type, taps, output>, samples, job, x, y, destination, count);
  const Kernel<taps, output> kernel(job);
  const Course course = course_of<type, taps>(x, y, count);
  for (int i = 0; i < count; i += samples) {
    i = std::min(i, count - samples);
    uint8_t* const to = destination + i * bytes;
    if (course.flat ? sample_flat<type>(kernel, x + i, y + i, course, to)
                    : sample_steep<type>(kernel, x + i, y + i, course, to)) {
      continue;
    }
    if (count > samples) {  // the row as a whole may have misled about this vector
      sample_output<type, taps, output>(job, x + i, y + i, to, samples);
    } else {
      sample_row_avx2(job, x + i, y + i, to, samples);
    }
  }
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
BISEAM_STEP void sample_bytes(const SampleJob& job, const int32_t* x, const int32_t* y, uint8_t* destination, int count) {
  if (is_pairs(job.source.type)) {
    sample_type<SampleType::byte_pairs, taps>(job, x, y, destination, count);
  } else {
    sample_type<SampleType::bytes, taps>(job, x, y, destination, count);
  }
}

// What isn't widened.  Fewer taps than six are sampled in tiles; only of words some are left.
BISEAM_STEP bool sample_narrow(const SampleJob& job, const int32_t* x, const int32_t* y, uint8_t* destination, int count) {
  const bool words = is_words(job.source.type);
  switch (job.across->taps) {
    case 2:
      if (words) sample_words<2>(job, x, y, destination, count);
      return words;
    case 4:
      if (words) sample_words<4>(job, x, y, destination, count);
      return words;
    default:
      words ? sample_words<6>(job, x, y, destination, count) : sample_bytes<6>(job, x, y, destination, count);
      return true;
  }
}

}  // namespace

BISEAM_AVX512 void sample_row_avx512(const SampleJob& job, const int32_t* x, const int32_t* y, void* destination,
                                     int count) noexcept {
  uint8_t* bytes = static_cast<uint8_t*>(destination);
  const AxisWeights& kernel = *job.across;
  const bool narrow = &kernel == job.down && kernel.phase_bits >= 6;
  if (narrow && sample_narrow(job, x, y, bytes, count)) return;
  // So few taps would leave most of a vector empty.
  const bool few = kernel.taps <= 4 && job.down->taps <= 4;
  if (few || !sample_widened_avx512(job, x, y, bytes, count)) sample_row_avx2(job, x, y, destination, count);
}

}  // namespace biseam::ring

#endif
