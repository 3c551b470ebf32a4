#pragma once

#include <cstdint>

#include "base/variants.hpp"
#include "ring/strip/picture.hpp"

namespace biseam::ring {

// A plane is reduced by a power of two, as by repeated halving with the weights 1 3 3 1: 3 factor - 2 taps, which add up to
// factor^3.
inline constexpr int kMaxReduction = 32;
constexpr int reduction_taps(int factor) { return 3 * factor - 2; }

struct ReductionKernel {
  int factor;
  int shift;  // log2 of the weights' sum
  int32_t weights[reduction_taps(kMaxReduction)];
};

// factor: 1, 2, 4 ... kMaxReduction.
ReductionKernel make_reduction_kernel(int factor) noexcept;

// One reduced row: out[i] is the weighted mean of sample step * i of all rows, in fine units, rounded to the nearest (halves
// up). Words above the depth's greatest code count as that code.
using ReduceRowsOfBytes = void(const uint8_t* const* rows, int step, const ReductionKernel& kernel, int16_t* out,
                               int count) noexcept;
using ReduceRowsOfWords = void(const uint16_t* const* rows, int step, SampleFormat format, const ReductionKernel& kernel,
                               int16_t* out, int count) noexcept;

// out[i]: weighted mean of samples factor * i ... factor * i + taps - 1, rounded likewise.
using ReduceColumns = void(const int16_t* samples, const ReductionKernel& kernel, int16_t* out, int count) noexcept;

extern constinit const Variants<ReduceRowsOfBytes> kReduceRowsOfBytes;
extern constinit const Variants<ReduceRowsOfWords> kReduceRowsOfWords;
extern constinit const Variants<ReduceColumns> kReduceColumns;

}  // namespace biseam::ring
