#include <climits>

#include "biseam/records.h"
#include "frame/blend/blend_rows.hpp"
#include "kernels/kernels.hpp"

namespace biseam::test {

namespace {

int32_t* any_samples(KernelCall& call) { return call.input<int32_t>(static_cast<std::size_t>(call.size()), INT_MIN, INT_MAX); }

ExpandedRows<int32_t> any_rows(KernelCall& call) {
  const int32_t *above = any_samples(call), *row = any_samples(call);
  return {above, row, any_samples(call)};
}

void call_narrow(KernelCall& call, NarrowRow* narrow) {
  const int32_t* src = any_samples(call);
  uint8_t* out = call.output<uint8_t>(static_cast<std::size_t>(call.size()));
  uint32_t* largest = call.input<uint32_t>(1, 0, 255);
  call.run([&] { narrow(src, out, call.size(), *largest); });
}

// Sizes are pixels.
void call_mirror_bytes(KernelCall& call, MirrorBytePixels* mirror) {
  const std::size_t samples = 3 * static_cast<std::size_t>(call.size());
  const uint8_t* src = call.input<uint8_t>(samples, 0, 255);
  uint8_t* out = call.output<uint8_t>(samples);
  call.run([&] { mirror(src + samples - 3, out, call.size()); });
}

uint8_t* bytes(KernelCall& call, uint8_t most) { return call.input<uint8_t>(static_cast<std::size_t>(call.size()), 0, most); }

ExpandedRows<uint16_t> expanded_bytes(KernelCall& call, bool with_above) {
  const auto row = [&] { return call.input<uint16_t>(static_cast<std::size_t>(call.size()), 0, 8 * 255); };
  ExpandedRows<uint16_t> rows;
  rows.above = with_above ? row() : nullptr;
  rows.row = row();
  rows.below = row();
  return rows;
}

void run_collapse(KernelCall& call, CollapseRow* collapse, CollapseRows rows, bool with_above) {
  rows.source1 = expanded_bytes(call, with_above);
  rows.source2 = expanded_bytes(call, with_above);
  rows.level1 = bytes(call, 255);
  rows.level2 = bytes(call, 255);
  rows.level_mask = bytes(call, BISEAM_WEIGHT_ONE);
  int32_t* out = call.output<int32_t>(static_cast<std::size_t>(call.size()));
  call.run([&] { collapse(rows, out, call.size()); });
}

void call_collapse(KernelCall& call, CollapseRow* collapse) {
  CollapseRows rows{};
  rows.blended = any_rows(call);
  run_collapse(call, collapse, rows, true);
}

void call_collapse_between(KernelCall& call, CollapseRow* collapse) {
  CollapseRows rows{};
  rows.blended.row = any_samples(call);
  rows.blended.below = any_samples(call);
  run_collapse(call, collapse, rows, false);
}

void call_mix_bytes(KernelCall& call, MixByteRow* mix) {
  const uint8_t *a = bytes(call, 255), *b = bytes(call, 255), *mask = bytes(call, BISEAM_WEIGHT_ONE);
  int32_t* out = call.output<int32_t>(static_cast<std::size_t>(call.size()));
  call.run([&] { mix(a, b, mask, out, call.size()); });
}

}  // namespace

std::vector<Kernel> blend_kernels() {
  return {make_kernel("narrow row", kNarrowRow, call_narrow, 384, 1 / 3.0),
          make_kernel("mirror byte pixels", kMirrorBytePixels, call_mirror_bytes, 64),
          make_kernel("collapse row on", kCollapseRowOn, call_collapse, 576, 1 / 3.0),
          make_kernel("collapse row between", kCollapseRowBetween, call_collapse_between, 576, 1 / 3.0),
          make_kernel("mix byte row", kMixByteRow, call_mix_bytes)};
}

}  // namespace biseam::test
