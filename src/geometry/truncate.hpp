#pragma once

#include <cstdint>

namespace biseam {

// Rounds toward zero; negative values and NaN give 0, values past the range its end.
constexpr uint32_t truncate_to_unsigned(float value) noexcept {
  if (!(value > 0.0f)) return 0;
  if (value >= 4294967296.0f) return 0xFFFFFFFFu;
  return static_cast<uint32_t>(value);
}

}  // namespace biseam
