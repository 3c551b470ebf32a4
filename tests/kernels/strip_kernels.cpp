#include <algorithm>

#include "kernels/kernels.hpp"
#include "ring/strip/lookup.hpp"
#include "ring/strip/low_band.hpp"
#include "ring/strip/pyramid.hpp"
#include "ring/strip/reduce_rows.hpp"
#include "ring/strip/seam_cost.hpp"
#include "ring/strip/seam_states.hpp"
#include "ring/strip/shape.hpp"
#include "ring/strip/unroll_rows.hpp"

namespace biseam::test {

namespace {

using namespace biseam::ring;

std::size_t samples_of(StripShape shape) { return static_cast<std::size_t>(strip_samples(shape)); }

// Sizes are reduced samples.  Exactly the samples that the contract names.
template <int factor, int step>
void call_reduce_rows_of_bytes(KernelCall& call, ReduceRowsOfBytes* reduce) {
  const ReductionKernel kernel = make_reduction_kernel(factor);
  const uint8_t* rows[reduction_taps(factor)];
  const std::size_t count = call.size() > 0 ? static_cast<std::size_t>(step * (call.size() - 1) + 1) : 0;
  for (const uint8_t*& row : rows) row = call.input<uint8_t>(count, 0, 255);
  int16_t* out = call.output<int16_t>(static_cast<std::size_t>(call.size()));
  call.run([&] { reduce(rows, step, kernel, out, call.size()); });
}

template <int factor, int step, int depth, int shift>
void call_reduce_rows_of_words(KernelCall& call, ReduceRowsOfWords* reduce) {
  const ReductionKernel kernel = make_reduction_kernel(factor);
  const uint16_t* rows[reduction_taps(factor)];
  const std::size_t count = call.size() > 0 ? static_cast<std::size_t>(step * (call.size() - 1) + 1) : 0;
  for (const uint16_t*& row : rows) row = call.input<uint16_t>(count, 0, 65535);
  int16_t* out = call.output<int16_t>(static_cast<std::size_t>(call.size()));
  call.run([&] { reduce(rows, step, {depth, shift}, kernel, out, call.size()); });
}

template <int factor>
void call_reduce_columns(KernelCall& call, ReduceColumns* reduce) {
  const ReductionKernel kernel = make_reduction_kernel(factor);
  const std::size_t count = call.size() > 0 ? static_cast<std::size_t>(factor * (call.size() - 1) + reduction_taps(factor)) : 0;
  const int16_t* samples = call.input<int16_t>(count, 0, kMaxFine);
  int16_t* out = call.output<int16_t>(static_cast<std::size_t>(call.size()));
  call.run([&] { reduce(samples, kernel, out, call.size()); });
}

// Sizes are strip samples, round a circle in planes of 128 x 128.
template <int count>
void call_unroll(KernelCall& call, UnrollRow* unroll) {
  const Reduction reduction = plan_reduction({512, 512, 1, 1, 0, 32768}, 4);
  ReducedPlanes planes{reduction.x, reduction.y, reduction.stride(), count, {nullptr, nullptr}};
  int16_t* out[2] = {nullptr, nullptr};
  const std::size_t size = static_cast<std::size_t>(call.size());
  // The last row ends with the last sample that can be read.
  const std::size_t read = static_cast<std::size_t>(reduction.samples() - reduction.stride() + reduction.x.count + 4);
  for (int i = 0; i < count; ++i) {
    planes.samples[i] = call.input<int16_t>(read, 0, kMaxFine);
    out[i] = call.output<int16_t>(size);
  }
  const int32_t *x = call.input<int32_t>(size, -(20 << 16), 532 << 16), *y = call.input<int32_t>(size, -(20 << 16), 532 << 16);
  call.run([&] { unroll(planes, x, y, out, call.size()); });
}

template <bool colour>
void call_seam_cost(KernelCall& call, SeamCostRow* fill) {
  const int width = std::max(1, call.size());
  const int16_t* rows[5];
  for (const int16_t*& row : rows) row = call.input<int16_t>(static_cast<std::size_t>(width), -kMaxFine, kMaxFine);
  const int pull = call.number(0, 200);
  uint16_t* cost = call.output<uint16_t>(static_cast<std::size_t>(width));
  const DifferenceRows differences{rows[0], rows[1], rows[2], {colour ? rows[3] : nullptr, colour ? rows[4] : nullptr}};
  call.run([&] { fill(differences, pull, cost, width); });
}

// Sizes are the width between limits that lean.
void call_seam_states(KernelCall& call, SeamStates* fill) {
  const StripShape shape{24, call.size() + 3};
  const std::size_t length = static_cast<std::size_t>(shape.length);
  const uint16_t* cost = call.input<uint16_t>(samples_of(shape), 0, 65535);
  int16_t *low = call.output<int16_t>(length), *high = call.output<int16_t>(length);
  for (int t = 0; t < shape.length; ++t) {
    low[t] = static_cast<int16_t>(t % 2);
    high[t] = static_cast<int16_t>(shape.width - 1 - t / 12);
  }
  const int first = call.number(0, shape.width - 1), last = call.number(first, shape.width - 1);
  const std::size_t states = length * static_cast<std::size_t>(state_stride(shape.width));
  uint32_t* out = call.output<uint32_t>(states);
  call.run([&] { fill(shape, cost, {low, high, first, last}, out); });
}

// Sizes are the width of a level, as far as strips have it.
StripShape level_of(const KernelCall& call) { return {16, std::clamp(call.size(), 3, kMaxStripWidth)}; }

void call_reduce_level(KernelCall& call, ReduceLevel* reduce) {
  const StripShape shape = level_of(call);
  const int16_t* fine = call.input<int16_t>(samples_of(shape), -kMaxFine, kMaxFine);
  int16_t* coarse = call.output<int16_t>(samples_of(reduced(shape)));
  call.run([&] { reduce(fine, shape, coarse); });
}

void call_subtract_expanded(KernelCall& call, SubtractExpanded* subtract) {
  const StripShape shape = level_of(call);
  const int16_t* fine = call.input<int16_t>(samples_of(shape), -kMaxFine, kMaxFine);
  const int16_t* coarse = call.input<int16_t>(samples_of(reduced(shape)), -kMaxFine, kMaxFine);
  int16_t* detail = call.output<int16_t>(samples_of(shape));
  call.run([&] { subtract(fine, coarse, shape, detail); });
}

void call_add_expanded(KernelCall& call, AddExpanded* add) {
  const StripShape shape = level_of(call);
  const int16_t* detail = call.input<int16_t>(samples_of(shape), -32768, 32767);
  const int16_t* weights = call.input<int16_t>(samples_of(shape), 0, kWeightOne);
  const int16_t* coarse = call.input<int16_t>(samples_of(reduced(shape)), -32768, 32767);
  int16_t* sum = call.output<int16_t>(samples_of(shape));
  call.run([&] { add(detail, weights, coarse, shape, sum); });
}

void call_correct(KernelCall& call, CorrectRow* correct) {
  const std::size_t width = static_cast<std::size_t>(call.size());
  const int16_t *mixed = call.input<int16_t>(width, -32768, 32767),
                *difference = call.input<int16_t>(width, -kMaxFine, kMaxFine);
  const int16_t* fade = call.input<int16_t>(width, 0, kFadeOne);
  int16_t *correction0 = call.output<int16_t>(width), *correction1 = call.output<int16_t>(width);
  call.run([&] { correct(mixed, difference, fade, correction0, correction1, call.size()); });
}

// Sizes are places, anywhere round a strip and beyond its edges.
constexpr StripShape kLookedUp{96, 56};

void call_look_up_corrections(KernelCall& call, LookUpCorrections* look_up) {
  const std::size_t count = static_cast<std::size_t>(call.size());
  const int16_t* corrections = call.input<int16_t>(samples_of(kLookedUp), -kMaxCorrection, kMaxCorrection);
  const int32_t* t = call.input<int32_t>(count, -(96 << 16), (2 * 96 << 16) - 1);
  const int32_t* b = call.input<int32_t>(count, -(9 << 16), 65 << 16);
  int32_t* out = call.output<int32_t>(count);
  call.run([&] { look_up(corrections, kLookedUp, t, b, out, call.size()); });
}

}  // namespace

std::vector<Kernel> strip_kernels() {
  return {
      make_kernel("ring reduce rows 1", kReduceRowsOfBytes, call_reduce_rows_of_bytes<1, 1>, 2048),
      make_kernel("ring reduce rows 2", kReduceRowsOfBytes, call_reduce_rows_of_bytes<2, 1>, 2048),
      make_kernel("ring reduce rows 2, pairs", kReduceRowsOfBytes, call_reduce_rows_of_bytes<2, 2>, 2048),
      make_kernel("ring reduce rows 4", kReduceRowsOfBytes, call_reduce_rows_of_bytes<4, 1>, 2048),
      make_kernel("ring reduce rows 8", kReduceRowsOfBytes, call_reduce_rows_of_bytes<8, 1>, 2048),
      make_kernel("ring reduce rows 16, pairs", kReduceRowsOfBytes, call_reduce_rows_of_bytes<16, 2>, 2048),
      make_kernel("ring reduce 10 bit rows 4", kReduceRowsOfWords, call_reduce_rows_of_words<4, 1, 10, 0>, 2048),
      make_kernel("ring reduce 10 bit rows 2, high pairs", kReduceRowsOfWords, call_reduce_rows_of_words<2, 2, 10, 6>, 2048),
      make_kernel("ring reduce 12 bit rows 32", kReduceRowsOfWords, call_reduce_rows_of_words<32, 1, 12, 4>, 2048),
      make_kernel("ring reduce columns 1", kReduceColumns, call_reduce_columns<1>, 512),
      make_kernel("ring reduce columns 2", kReduceColumns, call_reduce_columns<2>, 512),
      make_kernel("ring reduce columns 4", kReduceColumns, call_reduce_columns<4>, 512),
      make_kernel("ring reduce columns 32", kReduceColumns, call_reduce_columns<32>, 512),
      make_kernel("ring unroll", kUnrollRow, call_unroll<1>, 896),
      make_kernel("ring unroll a pair", kUnrollRow, call_unroll<2>, 896, 2),
      make_kernel("ring seam cost", kSeamCostRow, call_seam_cost<true>, 56),
      make_kernel("ring seam cost, gray", kSeamCostRow, call_seam_cost<false>, 56),
      make_kernel("ring seam states", kSeamStates, call_seam_states, 56, 24),
      make_kernel("ring reduce level", kReduceLevel, call_reduce_level, 56, 16),
      make_kernel("ring subtract expanded", kSubtractExpanded, call_subtract_expanded, 56, 16),
      make_kernel("ring add expanded", kAddExpanded, call_add_expanded, 56, 16),
      make_kernel("ring correct", kCorrectRow, call_correct, 56),
      make_kernel("ring look up corrections", kLookUpCorrections, call_look_up_corrections, 153),
  };
}

}  // namespace biseam::test
