#pragma once

#include <cstdint>

namespace biseam {

constexpr bool is_power_of_two(uint32_t value) { return value != 0 && (value & (value - 1)) == 0; }

// Rounds up to a multiple of align, modulo 2^32.  All bits are set when align is no power of two.
constexpr uint32_t align_size(uint32_t size, uint32_t align) {
  return is_power_of_two(align) ? (size + align - 1) & (0 - align) : UINT32_MAX;
}

// The same for an address; null when align is no power of two.
inline float* align_pointer(float* address, uint32_t align) {
  if (!is_power_of_two(align)) return nullptr;
  return reinterpret_cast<float*>((reinterpret_cast<uintptr_t>(address) + align - 1) & (0 - uintptr_t{align}));
}

}  // namespace biseam
