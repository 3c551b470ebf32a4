#pragma once

#include <algorithm>
#include <cmath>

#include "ring/sample/axis_weights.hpp"

// The kernels once more, written as their polynomials are found in books: pieces over the distance from the middle.
namespace biseam::test {

using namespace ring;

inline double formula(Quality quality, double distance) {
  const double d = std::fabs(distance), e = d - 1, g = d - 2;
  switch (quality) {
    case Quality::fast:
      return std::max(0.0, 1 - d);
    case Quality::good:
      if (d < 1) return 0.63 * d * d * d - 1.26 * d * d - 0.37 * d + 1;
      return d < 2 ? -0.21 * e * e * e + 0.63 * e * e - 0.42 * e : 0;
    default:
      if (d < 1) return (247 * d * d * d - 453 * d * d - 3 * d) / 209 + 1;
      if (d < 2) return (-114 * e * e * e + 270 * e * e - 156 * e) / 209;
      return d < 3 ? (19 * g * g * g - 45 * g * g + 26 * g) / 209 : 0;
  }
}

// The weight of a sample at a distance, unnormalised, of a widened kernel.
inline double widened(Quality quality, int widening, double distance) {
  return formula(kWidenings[widening] > 8 ? Quality::fast : quality, distance / kWidenings[widening]);
}

}  // namespace biseam::test
