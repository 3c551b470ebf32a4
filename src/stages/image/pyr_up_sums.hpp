#pragma once

#include <cstdint>

// The weighted sums of the expansion, in one direction; they wrap.
namespace biseam {

constexpr uint32_t sum_on(int32_t before, int32_t middle, int32_t after) noexcept {
  return static_cast<uint32_t>(before) + 6 * static_cast<uint32_t>(middle) + static_cast<uint32_t>(after);
}

constexpr uint32_t sum_between(int32_t middle, int32_t after) noexcept {
  return 4 * (static_cast<uint32_t>(middle) + static_cast<uint32_t>(after));
}

// (sum + 32) >> 6, rounding toward minus infinity.
constexpr int32_t expanded_from_sum(uint32_t sum) noexcept { return static_cast<int32_t>(sum + 32) >> 6; }

}  // namespace biseam
