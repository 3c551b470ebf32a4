#include "ring/strip/reduce_rows.hpp"

#include "base/loop_versions.hpp"
#include "ring/strip/shape.hpp"

namespace biseam::ring {

namespace {

constexpr int kBlock = 256;  // sums that stay in the first cache

BISEAM_LOOP int32_t rounded(int32_t sum, int shift) { return (sum + (1 << shift >> 1)) >> shift; }

// Sums of bytes by weights that add up to at most 64 fit 16 bits, which doubles what a vector holds.
template <int step, int taps, int scale>
BISEAM_LOOP void sum_few_byte_rows(const uint8_t* const* rows, const ReductionKernel& kernel, int16_t* out, int count) {
  const uint8_t* row[taps];
  uint16_t weight[taps];
  for (int k = 0; k < taps; ++k) {
    row[k] = rows[k];
    weight[k] = static_cast<uint16_t>(kernel.weights[k]);
  }
  BISEAM_TURNS_APART
  for (int i = 0; i < count; ++i) {
    uint16_t sum = taps % 2 != 0 ? row[taps / 2][step * i] : 0;
    for (int k = 0; k < taps / 2; ++k) {
      const uint16_t pair = static_cast<uint16_t>(row[k][step * i] + row[taps - 1 - k][step * i]);
      sum = static_cast<uint16_t>(sum + static_cast<uint16_t>(weight[k] * pair));
    }
    out[i] = static_cast<int16_t>(static_cast<uint16_t>(sum * scale));
  }
}

// Any number of rows, block by block: load(row, i) is a code, codes are scaled by 2^up.
template <class Row, class Load>
BISEAM_LOOP void sum_rows(const Row* const* rows, const ReductionKernel& kernel, int up, Load load, int16_t* out, int count) {
  int32_t sums[kBlock];
  for (int start = 0; start < count; start += kBlock) {
    const int block = count - start < kBlock ? count - start : kBlock;
    for (int i = 0; i < block; ++i) sums[i] = 0;
    for (int k = 0; k < reduction_taps(kernel.factor); ++k) {
      const int32_t weight = kernel.weights[k];
      const Row* row = rows[k];
      for (int i = 0; i < block; ++i) sums[i] += weight * load(row, start + i);
    }
    for (int i = 0; i < block; ++i) out[start + i] = static_cast<int16_t>(rounded(sums[i] << up, kernel.shift));
  }
}

template <int step>
BISEAM_LOOP void reduce_bytes(const uint8_t* const* rows, const ReductionKernel& kernel, int16_t* out, int count) {
  switch (kernel.factor) {
    case 1:
      return sum_few_byte_rows<step, 1, 64>(rows, kernel, out, count);
    case 2:
      return sum_few_byte_rows<step, 4, 8>(rows, kernel, out, count);
    case 4:
      return sum_few_byte_rows<step, 10, 1>(rows, kernel, out, count);
    default:
      return sum_rows(
          rows, kernel, kFineBits - 8, [](const uint8_t* row, int i) { return int32_t{row[step * i]}; }, out, count);
  }
}

BISEAM_LOOP void reduce_rows_of_bytes(const uint8_t* const* rows, int step, const ReductionKernel& kernel, int16_t* out,
                                      int count) noexcept {
  step == 1 ? reduce_bytes<1>(rows, kernel, out, count) : reduce_bytes<2>(rows, kernel, out, count);
}

template <int step>
BISEAM_LOOP void reduce_words(const uint16_t* const* rows, SampleFormat format, const ReductionKernel& kernel, int16_t* out,
                              int count) {
  const int32_t greatest = (1 << format.depth) - 1;
  const int shift = format.shift;
  const auto load = [=](const uint16_t* row, int i) {
    const int32_t code = row[step * i] >> shift;
    return code < greatest ? code : greatest;
  };
  sum_rows(rows, kernel, kFineBits - format.depth, load, out, count);
}

BISEAM_LOOP void reduce_rows_of_words(const uint16_t* const* rows, int step, SampleFormat format, const ReductionKernel& kernel,
                                      int16_t* out, int count) noexcept {
  step == 1 ? reduce_words<1>(rows, format, kernel, out, count) : reduce_words<2>(rows, format, kernel, out, count);
}

template <int factor>
BISEAM_LOOP void sum_columns(const int16_t* samples, const ReductionKernel& kernel, int16_t* out, int count) {
  int32_t weights[reduction_taps(factor)];
  for (int k = 0; k < reduction_taps(factor); ++k) weights[k] = kernel.weights[k];
  BISEAM_TURNS_APART
  for (int i = 0; i < count; ++i) {
    int32_t sum = 0;
    for (int k = 0; k < reduction_taps(factor); ++k) sum += weights[k] * samples[factor * i + k];
    out[i] = static_cast<int16_t>(rounded(sum, kernel.shift));
  }
}

BISEAM_LOOP void reduce_columns(const int16_t* samples, const ReductionKernel& kernel, int16_t* out, int count) noexcept {
  switch (kernel.factor) {
    case 1:
      return sum_columns<1>(samples, kernel, out, count);
    case 2:
      return sum_columns<2>(samples, kernel, out, count);
    case 4:
      return sum_columns<4>(samples, kernel, out, count);
    default:
      break;
  }
  for (int i = 0; i < count; ++i) {
    int32_t sum = 0;
    for (int k = 0; k < reduction_taps(kernel.factor); ++k) sum += kernel.weights[k] * samples[kernel.factor * i + k];
    out[i] = static_cast<int16_t>(rounded(sum, kernel.shift));
  }
}

}  // namespace

constinit const Variants<ReduceRowsOfBytes> kReduceRowsOfBytes = loop_versions<reduce_rows_of_bytes, ReduceRowsOfBytes>;
constinit const Variants<ReduceRowsOfWords> kReduceRowsOfWords = loop_versions<reduce_rows_of_words, ReduceRowsOfWords>;
constinit const Variants<ReduceColumns> kReduceColumns = loop_versions<reduce_columns, ReduceColumns>;

ReductionKernel make_reduction_kernel(int factor) noexcept {
  ReductionKernel kernel{1, 0, {1}};
  constexpr int32_t halving[4] = {1, 3, 3, 1};
  while (kernel.factor < factor) {
    // The halving of what is halved already reaches 3 of its samples further.
    ReductionKernel next{2 * kernel.factor, kernel.shift + 3, {}};
    for (int k = 0; k < reduction_taps(kernel.factor); ++k) {
      for (int h = 0; h < 4; ++h) next.weights[k + h * kernel.factor] += kernel.weights[k] * halving[h];
    }
    kernel = next;
  }
  return kernel;
}

}  // namespace biseam::ring
