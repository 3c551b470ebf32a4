#pragma once

#include <numbers>

namespace biseam::tool {

inline constexpr double kDegree = std::numbers::pi / 180;  // radians

}  // namespace biseam::tool
