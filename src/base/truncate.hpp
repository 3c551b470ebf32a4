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

// Rounds toward zero; negative values and NaN give 0, values past the range its end.
constexpr uint32_t truncate_to_unsigned(float value) noexcept {
  if (!(value > 0.0f)) return 0;
  if (value >= 4294967296.0f) return 0xFFFFFFFFu;
  return static_cast<uint32_t>(value);
}

}  // namespace biseam
