// Numbers of files that count their bytes from the lowest.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace biseam::tool {

inline void append_number(std::vector<std::uint8_t>& bytes, std::uint64_t value, int count) {
  for (int i = 0; i < count; ++i) bytes.push_back(std::uint8_t(value >> (8 * i)));
}

inline std::uint64_t number_at(const std::uint8_t* bytes, int count) {
  std::uint64_t value = 0;
  for (int i = count; i-- > 0;) value = value << 8 | bytes[i];
  return value;
}

}  // namespace biseam::tool
