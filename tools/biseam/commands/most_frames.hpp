#pragma once

namespace biseam::tool {

inline constexpr int kMostFrames = 1000000000;  // a year at 30 a second

}  // namespace biseam::tool
