// Luma planes to be compared.
#pragma once

#include <cstdint>
#include <vector>

#include "compare/metrics.hpp"
#include "support/random_source.hpp"

namespace biseam::test {

using LumaPlane = std::vector<std::uint8_t>;

inline LumaPlane flat_plane(tool::Size size, int code) {
  return LumaPlane(std::size_t(size.width) * std::size_t(size.height), std::uint8_t(code));
}

inline LumaPlane random_plane(tool::Size size, RandomSource& random) {
  LumaPlane plane = flat_plane(size, 0);
  for (std::uint8_t& code : plane) code = random.byte();
  return plane;
}

inline tool::Quality measure_whole(tool::Size size, const LumaPlane& a, const LumaPlane& b) {
  return tool::measure({size, a, b}, tool::all_columns(size.width));
}

}  // namespace biseam::test
