#include <climits>

#include "blend/arithmetic_kernels.hpp"
#include "blend/collapse_kernels.hpp"
#include "kernels/kernels.hpp"

namespace biseam::test {

namespace {

int32_t* any_samples(KernelCall& call) { return call.input<int32_t>(static_cast<std::size_t>(call.size()), INT_MIN, INT_MAX); }

void call_fill(KernelCall& call, FillRow* fill) {
  int32_t* out = call.output<int32_t>(static_cast<std::size_t>(call.size()));
  call.run([&] { fill(out, -7, call.size()); });
}

void call_combine(KernelCall& call, CombineRow* combine) {
  const int32_t *a = any_samples(call), *b = any_samples(call);
  int32_t* out = call.output<int32_t>(static_cast<std::size_t>(call.size()));
  call.run([&] { combine(a, b, out, call.size()); });
}

void call_combine_in_place(KernelCall& call, CombineRow* combine) {
  int32_t *a = any_samples(call), *b = any_samples(call);
  call.run([&] { combine(a, b, a, call.size()); });
}

void call_mix(KernelCall& call, MixRow* mix) {
  int32_t *a = any_samples(call), *b = any_samples(call);
  const int32_t* mask = any_samples(call);
  int32_t* out = call.output<int32_t>(static_cast<std::size_t>(call.size()));
  call.run([&] { mix(a, b, mask, out, call.size()); });
}

ExpandedRows any_rows(KernelCall& call) {
  const int32_t *above = any_samples(call), *row = any_samples(call);
  return {above, row, any_samples(call)};
}

void call_collapse(KernelCall& call, CollapseRow* collapse) {
  CollapseRows rows;
  rows.blended = any_rows(call);
  rows.source1 = any_rows(call);
  rows.source2 = any_rows(call);
  for (const int32_t** row : {&rows.level1, &rows.level2, &rows.level_mask}) *row = any_samples(call);
  int32_t* out = call.output<int32_t>(static_cast<std::size_t>(call.size()));
  call.run([&] { collapse(rows, out, call.size()); });
}

// Nothing above is read: it is not even there.
void call_collapse_between(KernelCall& call, CollapseRow* collapse) {
  CollapseRows rows;
  for (ExpandedRows* expanded : {&rows.blended, &rows.source1, &rows.source2}) {
    expanded->above = nullptr;
    expanded->row = any_samples(call);
    expanded->below = any_samples(call);
  }
  for (const int32_t** row : {&rows.level1, &rows.level2, &rows.level_mask}) *row = any_samples(call);
  int32_t* out = call.output<int32_t>(static_cast<std::size_t>(call.size()));
  call.run([&] { collapse(rows, out, call.size()); });
}

}  // namespace

std::vector<Kernel> blend_kernels() {
  return {make_kernel("fill row", kFillRow, call_fill),
          make_kernel("subtract row", kSubtractRow, call_combine),
          make_kernel("subtract row in place", kSubtractRow, call_combine_in_place),
          make_kernel("add row", kAddRow, call_combine),
          make_kernel("add row in place", kAddRow, call_combine_in_place),
          make_kernel("multiply row", kMultiplyRow, call_combine),
          make_kernel("mix row", kMixRow, call_mix),
          make_kernel("collapse row on", kCollapseRowOn, call_collapse, 576, 1 / 3.0),
          make_kernel("collapse row between", kCollapseRowBetween, call_collapse_between, 576, 1 / 3.0)};
}

}  // namespace biseam::test
