#pragma once

#include <bit>
#include <cstdint>

// About 1 / x and 1 / sqrt(x) to eight bits: the lookup tables hold values of this precision, the same on every host.  These
// are the estimates of 32-bit ARM's vector unit (VRECPE.F32 and VRSQRTE.F32), in integers.  They equal the instructions for
// every input; tests/stages/lens/estimate_proof.cpp shows it.  The vector unit takes denormals for zeros, gives zeros for
// denormals, and gives the default NaN for every NaN.  64-bit ARM's instructions keep denormals and NaN payloads.
namespace biseam {

// Upper eight fraction bits of an estimate in [1, 2), by the upper bits of the operand's fraction.
struct EstimateFractions {
  alignas(64) uint8_t values[256];
};

// Operands in [1/2, 1) in steps of 1/512: the reciprocal of the step's middle, rounded to 1/256.
constexpr EstimateFractions make_reciprocal_fractions() {
  EstimateFractions table{};
  for (uint32_t step = 0; step < 256; ++step) {
    const uint32_t middle = 2 * (256 + step) + 1;  // in 1/1024
    const uint32_t reciprocal = ((1u << 19) / middle + 1) / 2;
    table.values[step] = static_cast<uint8_t>(reciprocal - 256);
  }
  return table;
}

// Operands in [1/2, 1) in steps of 1/256, then operands in [1/4, 1/2) in steps of 1/512.
constexpr EstimateFractions make_root_fractions() {
  EstimateFractions table{};
  for (uint32_t step = 0; step < 256; ++step) {
    const uint32_t middle = step < 128 ? 2 * (2 * step + 257) : 2 * step + 1;  // in 1/1024
    uint32_t root = 512;
    while (middle * (root + 1) * (root + 1) < (1u << 28)) ++root;
    table.values[step] = static_cast<uint8_t>((root + 1) / 2 - 256);
  }
  return table;
}

inline constexpr EstimateFractions kReciprocalFractions = make_reciprocal_fractions();
inline constexpr EstimateFractions kRootFractions = make_root_fractions();

inline constexpr uint32_t kSignBit = 0x80000000u, kInfinity = 0x7F800000u, kDefaultNan = 0x7FC00000u;

// About 1 / operand, relative error up to 1/256.
constexpr uint32_t reciprocal_estimate_bits(uint32_t operand) noexcept {
  const uint32_t sign = operand & kSignBit, magnitude = operand & ~kSignBit, exponent = magnitude >> 23;
  if (magnitude > kInfinity) return kDefaultNan;
  if (exponent == 0) return sign | kInfinity;
  if (exponent >= 253) return sign;  // the result would be a denormal
  return sign | (253 - exponent) << 23 | uint32_t{kReciprocalFractions.values[operand >> 15 & 0xFF]} << 15;
}

// About 1 / sqrt(operand), relative error up to 1/256.
constexpr uint32_t reciprocal_root_estimate_bits(uint32_t operand) noexcept {
  const uint32_t sign = operand & kSignBit, magnitude = operand & ~kSignBit, exponent = magnitude >> 23;
  if (magnitude > kInfinity) return kDefaultNan;
  if (exponent == 0) return sign | kInfinity;
  if (sign != 0) return kDefaultNan;
  if (magnitude == kInfinity) return 0;
  // The exponent's lowest bit and the upper seven fraction bits: even exponents are [1/2, 1), odd ones [1/4, 1/2).
  return (380 - exponent) / 2 << 23 | uint32_t{kRootFractions.values[operand >> 16 & 0xFF]} << 15;
}

constexpr float reciprocal_estimate(float operand) noexcept {
  return std::bit_cast<float>(reciprocal_estimate_bits(std::bit_cast<uint32_t>(operand)));
}

constexpr float reciprocal_root_estimate(float operand) noexcept {
  return std::bit_cast<float>(reciprocal_root_estimate_bits(std::bit_cast<uint32_t>(operand)));
}

}  // namespace biseam
