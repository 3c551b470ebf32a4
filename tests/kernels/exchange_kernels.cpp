#include "frame/compose/exchange.hpp"
#include "kernels/kernels.hpp"

namespace biseam::test {

namespace {

void call_swap(KernelCall& call, SwapRows* swap) {
  uint8_t* upper = call.input<uint8_t>(static_cast<std::size_t>(call.size()), 0, 255);
  uint8_t* lower = call.input<uint8_t>(static_cast<std::size_t>(call.size()), 0, 255);
  call.run([&] { swap(upper, lower, call.size()); });
}

void call_reverse_bytes(KernelCall& call, ReverseRow<uint8_t>* reverse) {
  uint8_t* row = call.input<uint8_t>(static_cast<std::size_t>(call.size()), 0, 255);
  call.run([&] { reverse(row, call.size()); });
}

void call_reverse_pairs(KernelCall& call, ReverseRow<PlanePair>* reverse) {
  uint8_t* row = call.input<uint8_t>(static_cast<std::size_t>(2 * call.size()), 0, 255);
  call.run([&] { reverse(reinterpret_cast<PlanePair*>(row), call.size()); });
}

}  // namespace

std::vector<Kernel> exchange_kernels() {
  return {make_kernel("swap rows", kSwapRows, call_swap, 3840),
          make_kernel("reverse bytes", kReverseBytes, call_reverse_bytes, 3840),
          make_kernel("reverse pairs", kReversePairs, call_reverse_pairs, 1920)};
}

}  // namespace biseam::test
