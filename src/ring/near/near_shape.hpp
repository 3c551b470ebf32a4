// At which pitch near things are looked for in the strips, how far apart, and where across.
#pragma once

#include "ring/strip/shape.hpp"

namespace biseam::ring {

// Disparities are 0 .. kMostDisparities - 1 at most, each a sample of the search.
inline constexpr int kMostDisparities = 13;
inline constexpr int kMostSearchLength = 1024;

// A search sample is the mean of 2^bits strip samples along and across.  With a disparity of d, what a row of the search shows
// at column b lies at b + (d + 1) / 2 in lens 0's strip and at b - d / 2 in lens 1's, both rounded down.
struct NearShape {
  StripShape strip;
  int bits, length, width;
  int disparities;   // 1: the ring is too narrow to tell
  int first, count;  // columns that are compared, round the middle
  int reach;         // rows before and after one that count for it
};

NearShape near_shape(StripShape strip) noexcept;
inline bool can_find_disparities(const NearShape& shape) noexcept { return shape.disparities > 1; }

}  // namespace biseam::ring
