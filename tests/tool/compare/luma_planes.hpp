// Luma planes to be compared.
#pragma once

#include <vector>

#include "compare/metrics.hpp"
#include "support/random_source.hpp"

namespace biseam::test {

using LumaPlane = std::vector<float>;

inline LumaPlane flat_plane(tool::Size size, int code) {
  return LumaPlane(std::size_t(size.width) * std::size_t(size.height), float(code));
}

inline LumaPlane random_plane(tool::Size size, RandomSource& random) {
  LumaPlane plane = flat_plane(size, 0);
  for (float& code : plane) code = float(random.byte());
  return plane;
}

inline tool::Quality measure_whole(tool::Size size, const LumaPlane& a, const LumaPlane& b) {
  return tool::measure({size, a, b}, tool::all_columns(size.width));
}

}  // namespace biseam::test
