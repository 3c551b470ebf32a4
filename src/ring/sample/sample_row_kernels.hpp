#pragma once

#include "base/variants.hpp"
#include "ring/fine.hpp"
#include "ring/sample/sample_row.hpp"

// The versions behind sample_row.hpp, and what they share.
namespace biseam::ring {

using SampleAll = void(const SampleJob& job, const SampleRows& rows) noexcept;

extern const Variants<SampleAll> kSampleRows;

// One row of positions, and count results.
using SampleRow = void(const SampleJob& job, const int32_t* x, const int32_t* y, void* destination, int count) noexcept;

SampleRow sample_row_scalar, sample_row_neon, sample_row_avx2, sample_row_avx512;

// Of bytes, at most 24 x 24 taps.  False: not such a job, nothing is done.
bool sample_widened_avx512(const SampleJob& job, const int32_t* x, const int32_t* y, uint8_t* destination, int count) noexcept;

// Of two by two or four by four taps that are not widened: bytes, and words.
SampleAll sample_tiles_avx512, sample_word_tiles_avx512;
bool are_tiles(const SampleJob& job) noexcept;

// Vectors of samples, the last of which may overlap the one before it.
using SampleVectors = void(const SampleJob& job, const int32_t* x, const int32_t* y, uint8_t* destination, int count) noexcept;

// None, or fewer samples than a vector has, at most 16, by one whose last position is repeated.
void sample_rest(SampleVectors* sample, int samples, const SampleJob& job, const int32_t* x, const int32_t* y,
                 uint8_t* destination, int count) noexcept;

// Both sums are held at 14 bits and a fraction, whatever the depth: the first has kTapBits + bits, the second kTapBits
// + 14.
constexpr int across_shift(const SampleSource& source) { return kTapBits + source.bits - kFineBits; }

// How the second sum becomes a result: (sum + half) >> shift, in [low, high], << up.
struct Finish {
  int32_t half;
  int shift;
  int32_t low, high;
  int up;

  constexpr explicit Finish(const SampleJob& job)
      : half(0),
        shift(kTapBits + (job.output == SampleOutput::fine ? 0 : kFineBits - job.source.bits)),
        low(job.output == SampleOutput::fine ? INT16_MIN : 0),
        high(job.output == SampleOutput::fine ? INT16_MAX : (1 << job.source.bits) - 1),
        up(job.output == SampleOutput::fine ? 0 : job.source.shift) {
    half = 1 << (shift - 1);
  }

  constexpr int32_t operator()(int32_t sum) const {
    const int32_t value = (sum + half) >> shift;
    return (value < low ? low : value > high ? high : value) << up;
  }
};

// A position along an axis: its first tap's sample, and the phase.
struct AxisPlace {
  int first, phase;
};

inline AxisPlace place_on(const AxisWeights& axis, int32_t position) noexcept {
  const int below = 16 - axis.phase_bits;
  const auto rounded = static_cast<int32_t>(static_cast<uint32_t>(position) + (1u << (below - 1)));
  return {(rounded >> 16) - axis.before, (rounded >> below) & (axis.phases() - 1)};
}

}  // namespace biseam::ring
