#include <climits>

#include "frame/blend/byte_rows.hpp"
#include "frame/blend/expand_row.hpp"
#include "kernels/kernels.hpp"

namespace biseam::test {

namespace {

std::size_t samples(KernelCall& call, int pixels_per_size = 1, int more = 0) {
  return static_cast<std::size_t>(call.size() * pixels_per_size + more);
}

// Sizes are pixels, a neighbour at either end.
void call_expand_pixels(KernelCall& call, ExpandPixels* expand) {
  const int32_t* src = call.input<int32_t>(samples(call, 3, 6), INT_MIN, INT_MAX);
  int32_t* row = call.output<int32_t>(samples(call, 6));
  call.run([&] { expand(src + 3, row, call.size()); });
}

// Sizes are samples.
void call_sum_byte_rows(KernelCall& call, SumByteRows* sum) {
  const uint8_t* rows[5];
  for (const uint8_t*& row : rows) row = call.input<uint8_t>(samples(call), 0, 255);
  uint16_t* out = call.output<uint16_t>(samples(call));
  call.run([&] { sum(rows, out, call.size()); });
}

// Sizes are pixels: exactly the sums that the contract names, two pixels before the first and two behind the last.
void call_reduce_byte_pixels(KernelCall& call, ReduceBytePixels* reduce) {
  const uint16_t* sums = call.input<uint16_t>(samples(call, 6, 9), 0, 16 * 255);
  uint8_t* row = call.output<uint8_t>(samples(call, 3));
  call.run([&] { reduce(sums + 6, row, call.size()); });
}

void call_expand_byte_pixels(KernelCall& call, ExpandBytePixels* expand) {
  const uint8_t* src = call.input<uint8_t>(samples(call, 3, 6), 0, 255);
  uint16_t* row = call.output<uint16_t>(samples(call, 6));
  call.run([&] { expand(src + 3, row, call.size()); });
}

}  // namespace

// Measured at the widths of a band of 192 pixels.
std::vector<Kernel> pyramid_kernels() {
  return {make_kernel("expand pixels", kExpandPixels, call_expand_pixels, 94, 2),
          make_kernel("sum byte rows", kSumByteRows, call_sum_byte_rows, 576, 1 / 3.0),
          make_kernel("reduce byte pixels", kReduceBytePixels, call_reduce_byte_pixels, 94),
          make_kernel("expand byte pixels", kExpandBytePixels, call_expand_byte_pixels, 94, 2)};
}

}  // namespace biseam::test
