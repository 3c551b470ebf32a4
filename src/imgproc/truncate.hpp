#pragma once

#include <cstdint>

namespace biseam {

// Rounds toward zero; values past the range give its end, NaN gives 0.
constexpr int32_t truncate_to_int(float value) noexcept {
  if (value != value) return 0;
  if (value >= 2147483648.0f) return INT32_MAX;
  if (value < -2147483648.0f) return INT32_MIN;
  return static_cast<int32_t>(value);
}

}  // namespace biseam
