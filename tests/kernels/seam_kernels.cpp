#include <climits>

#include "frame/seam/cost_rows.hpp"
#include "frame/seam/detail_rows.hpp"
#include "frame/seam/pick.hpp"
#include "kernels/kernels.hpp"

namespace biseam::test {

namespace {

constexpr float kTap = 0x1.745d14p-4f;
constexpr float kGrayEnd = 8388608.0f;  // grays and their means lie within +-2^23

std::size_t samples_of(const KernelCall& call) { return static_cast<std::size_t>(call.size()); }

void call_round(KernelCall& call, RoundRow* round) {
  int32_t* row = call.input<int32_t>(samples_of(call), INT_MIN, INT_MAX);
  call.run([&] { round(row, call.size()); });
}

void call_gray(KernelCall& call, GrayRow* gray) {
  const int32_t* pixels = call.input<int32_t>(3 * samples_of(call), INT_MIN, INT_MAX);
  int32_t* out = call.output<int32_t>(samples_of(call));
  call.run([&] { gray(pixels, out, call.size()); });
}

void call_mean(KernelCall& call, MeanRow* mean) {
  const float* samples = call.input<float>(samples_of(call) + kDetailTaps - 1, -kGrayEnd, kGrayEnd);
  const float* totals = call.input<float>(samples_of(call), kTap, 1.0f);
  float* means = call.output<float>(samples_of(call));
  call.run([&] { mean(samples, kTap, totals, means, call.size()); });
}

void call_detail(KernelCall& call, DetailRow* detail) {
  const std::ptrdiff_t stride = call.size() + call.number(0, 3);
  const std::size_t samples = static_cast<std::size_t>((kDetailTaps - 1) * stride) + samples_of(call);
  const float* rows = call.input<float>(samples, -kGrayEnd, kGrayEnd);
  const int32_t* gray = call.input<int32_t>(samples_of(call), -(1 << 23), (1 << 23) - 1);
  int32_t* out = call.output<int32_t>(samples_of(call));
  call.run([&] { detail(rows, stride, kTap, 1.0f, gray, out, call.size()); });
}

void call_difference(KernelCall& call, DifferenceRow* difference) {
  const int32_t* a = call.input<int32_t>(samples_of(call) + 2, INT_MIN, INT_MAX);
  const int32_t* b = call.input<int32_t>(samples_of(call) + 2, INT_MIN, INT_MAX);
  float* sums = call.output<float>(samples_of(call));
  call.run([&] { difference(a, b, sums, call.size()); });
}

void call_cost(KernelCall& call, CostRow* cost) {
  const float* first = call.input<float>(samples_of(call), 0.0f, 6e19f);
  const float* second = call.input<float>(samples_of(call), 0.0f, 3e5f);
  float* costs = call.output<float>(samples_of(call));
  call.run([&] { cost(first, second, costs, call.size()); });
}

}  // namespace

std::vector<Kernel> seam_kernels() {
  constexpr int bench_size = 64;  // a wide strip's row
  return {make_kernel("round row", kRoundRow, call_round, 576),
          make_kernel("gray row", kGrayRow, call_gray, bench_size),
          make_kernel("mean row", kMeanRow, call_mean, bench_size),
          make_kernel("detail row", kDetailRow, call_detail, bench_size),
          make_kernel("difference row", kDifferenceRow, call_difference, bench_size),
          make_kernel("cost row", kCostRow, call_cost, bench_size)};
}

}  // namespace biseam::test
