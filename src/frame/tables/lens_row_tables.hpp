#pragma once

#include <bit>
#include <cstdint>

#include "stages/lens/arctangent_table.hpp"
#include "stages/lens/estimate.hpp"
#include "stages/lens/trig.hpp"

// The arctangent's and the estimates' tables in the forms that vector versions of map_row read.
namespace biseam {

// Both ends of an interpolation step lie side by side: where it starts and by how much it rises.
struct ArctangentStep {
  float left, rise;
};
struct ArctangentSteps {
  alignas(64) ArctangentStep values[256];
};

constexpr ArctangentSteps make_arctangent_steps() {
  ArctangentSteps steps{};
  for (int i = 0; i < 256; ++i) {
    steps.values[i] = {kArctangents.values[i], kArctangents.values[i + 1] - kArctangents.values[i]};
  }
  return steps;
}

inline constexpr ArctangentSteps kArctangentSteps = make_arctangent_steps();

// The same floats byte by byte, the lowest first.  The highest byte of all rises is one value, but for the last one's zero.
struct ArctangentBytes {
  alignas(64) uint8_t left[4][256];
  alignas(64) uint8_t rise[3][256];
};
inline constexpr uint8_t kRiseTopByte = 0x3B;

constexpr ArctangentBytes make_arctangent_bytes() {
  ArctangentBytes bytes{};
  for (int i = 0; i < 256; ++i) {
    const ArctangentStep& step = kArctangentSteps.values[i];
    for (int k = 0; k < 4; ++k) bytes.left[k][i] = static_cast<uint8_t>(std::bit_cast<uint32_t>(step.left) >> 8 * k);
    for (int k = 0; k < 3; ++k) bytes.rise[k][i] = static_cast<uint8_t>(std::bit_cast<uint32_t>(step.rise) >> 8 * k);
  }
  return bytes;
}

constexpr bool rises_share_their_top_byte() {
  for (int i = 0; i < 255; ++i) {
    if (std::bit_cast<uint32_t>(kArctangentSteps.values[i].rise) >> 24 != kRiseTopByte) return false;
  }
  return std::bit_cast<uint32_t>(kArctangentSteps.values[255].rise) == 0;
}
static_assert(rises_share_their_top_byte());

inline constexpr ArctangentBytes kArctangentBytes = make_arctangent_bytes();

// The least float that is not below the bound of the small-angle rule, a double: comparing floats with it decides alike.
inline constexpr float kLeastTableRatio = 0x1.010104p-8f;
static_assert(static_cast<double>(kLeastTableRatio) >= kSmallRatio);
static_assert(static_cast<double>(std::bit_cast<float>(std::bit_cast<uint32_t>(kLeastTableRatio) - 1)) < kSmallRatio);

// Bits of floats from least on, range of them.
struct BitRange {
  uint32_t least, range;
};
// Operands that need no special case: z from 2^-60 to 2^60, squared radii from 2^-100 to 2^100.  No tangent of theirs is zero,
// denormal or infinite.
inline constexpr BitRange kOrdinaryZ{67u << 23, 120u << 23}, kOrdinarySquare{27u << 23, 200u << 23};

// The estimates of a root and of that root's reciprocal depend on the same eight bits of the operand: both in one word, the
// root's fraction in bits 15 to 22, the other's in bits 23 to 30.
struct RootPairs {
  alignas(64) uint32_t values[256];
};

constexpr RootPairs make_root_pairs() {
  RootPairs pairs{};
  for (int i = 0; i < 256; ++i) {
    const uint32_t root = kRootFractions.values[i], radius = kReciprocalFractions.values[root];
    pairs.values[i] = root << 15 | radius << 23;
  }
  return pairs;
}

inline constexpr RootPairs kRootPairs = make_root_pairs();

}  // namespace biseam
