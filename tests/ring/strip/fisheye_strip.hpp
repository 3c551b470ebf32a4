#pragma once

#include <cmath>
#include <cstdint>
#include <numbers>
#include <vector>

#include "ring/strip/strips.hpp"

namespace biseam::test {

using namespace biseam::ring;

// Where strip samples lie in two plain equidistant lenses of 200 degrees whose circle fills the picture.
struct FisheyePositions {
  std::vector<int32_t> x[2], y[2];

  FisheyePositions(StripShape shape, int picture) {
    const double pixels_per_radian = picture / (200 * std::numbers::pi / 180), middle = (picture - 1) / 2.0;
    const double pitch = 2 * std::numbers::pi / shape.length;
    for (int lens = 0; lens < 2; ++lens) {
      for (int t = 0; t < shape.length; ++t) {
        for (int b = 0; b < shape.width; ++b) {
          const double across = (b - (shape.width - 1) / 2.0) * pitch;
          const double radius = pixels_per_radian * (std::numbers::pi / 2 + (lens == 0 ? across : -across));
          x[lens].push_back(q16(middle + (lens == 0 ? -1 : 1) * radius * std::cos(pitch * t)));
          y[lens].push_back(q16(middle + radius * std::sin(pitch * t)));
        }
      }
    }
  }

  StripPositions of(int lens) const { return {x[lens].data(), y[lens].data()}; }
  static int32_t q16(double pixels) { return static_cast<int32_t>(std::lrint(pixels * 65536)); }
};

}  // namespace biseam::test
