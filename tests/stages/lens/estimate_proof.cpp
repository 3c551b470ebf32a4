// Compares the library's estimates with the vector unit's own instructions, bit for bit.
//
//   arm-linux-gnueabihf-g++ -std=c++20 -O2 -march=armv7-a -mfpu=neon -mfloat-abi=hard -static -Isrc
//       tests/stages/lens/estimate_proof.cpp -o estimate_proof_arm && qemu-arm ./estimate_proof_arm
//   aarch64-linux-gnu-g++ -std=c++20 -O2 -static -Isrc
//       tests/stages/lens/estimate_proof.cpp -o estimate_proof_arm64 && qemu-aarch64 ./estimate_proof_arm64
//
// Arguments: [stride [first [last]]], operand bit patterns; without any, all 2^32 operands are compared.
//
// Why a stride is enough between full runs: by the instructions' definition the result depends on the sign, the exponent, the
// upper eight fraction bits and, where the exponent is 0 or 255, on whether the fraction is zero.  A stride of at most 2^15
// meets every combination of the first three.  Both ends of each combination, the only places where a wrong boundary could
// show, are compared as well, whatever the stride.
#include <arm_neon.h>

#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "stages/lens/estimate.hpp"

namespace {

struct Tally {
  uint64_t compared = 0, different = 0;
};

#if defined(__aarch64__)
// Default NaN and flush to zero: the mode in which the 32-bit vector unit always works.
void enter_vector_mode() {
  const uint64_t default_nan_and_flush = uint64_t{3} << 24;
  asm volatile("msr fpcr, %0" ::"r"(default_nan_and_flush));
}
#else
void enter_vector_mode() {}
#endif

void report(const char* instruction, uint32_t operand, uint32_t real, uint32_t portable) {
  std::printf("%s of %08" PRIx32 ": instruction %08" PRIx32 ", portable %08" PRIx32 "\n", instruction, operand, real, portable);
}

void compare(Tally& tally, const char* instruction, uint32_t operand, uint32_t real, uint32_t portable) {
  ++tally.compared;
  if (real == portable) return;
  if (++tally.different <= 20) report(instruction, operand, real, portable);
}

void compare_operands(Tally& tally, const uint32_t operands[4]) {
  const float32x4_t lanes = vreinterpretq_f32_u32(vld1q_u32(operands));
  uint32_t reciprocals[4], roots[4];
  vst1q_u32(reciprocals, vreinterpretq_u32_f32(vrecpeq_f32(lanes)));
  vst1q_u32(roots, vreinterpretq_u32_f32(vrsqrteq_f32(lanes)));
  for (int i = 0; i < 4; ++i) {
    compare(tally, "reciprocal", operands[i], reciprocals[i], biseam::reciprocal_estimate_bits(operands[i]));
    compare(tally, "reciprocal root", operands[i], roots[i], biseam::reciprocal_root_estimate_bits(operands[i]));
  }
}

void compare_range(Tally& tally, uint64_t first, uint64_t last, uint64_t stride) {
  for (uint64_t operand = first; operand <= last; operand += 4 * stride) {
    uint32_t operands[4];
    for (uint64_t i = 0; i < 4; ++i) {
      const uint64_t wanted = operand + i * stride;
      operands[i] = static_cast<uint32_t>(wanted <= last ? wanted : last);
    }
    compare_operands(tally, operands);
  }
}

void compare_ends(Tally& tally) {
  for (uint64_t step = 0; step <= 0xFFFFFFFFu; step += 1u << 15) {
    const uint32_t first = static_cast<uint32_t>(step);
    const uint32_t operands[4] = {first, first + 1, first + 0x7FFE, first + 0x7FFF};
    compare_operands(tally, operands);
  }
}

uint64_t argument(int count, char** values, int index, uint64_t otherwise) {
  return index < count ? std::strtoull(values[index], nullptr, 0) : otherwise;
}

}  // namespace

int main(int count, char** values) {
  const uint64_t stride = argument(count, values, 1, 1), first = argument(count, values, 2, 0),
                 last = argument(count, values, 3, 0xFFFFFFFFu);
  if (stride == 0 || stride > 1u << 15 || first > last || last > 0xFFFFFFFFu) {
    std::puts("usage: estimate_proof [stride 1..32768 [first [last]]]");
    return 2;
  }
  enter_vector_mode();
  Tally tally;
  compare_ends(tally);
  compare_range(tally, first, last, stride);
  std::printf("operands %08" PRIx64 " to %08" PRIx64 " by %" PRIu64 ": %" PRIu64 " comparisons, %" PRIu64 " differences\n",
              first, last, stride, tally.compared, tally.different);
  return tally.different == 0 ? 0 : 1;
}
