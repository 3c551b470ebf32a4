// A scene that is known exactly in every direction, for measuring what a panorama has lost.
#pragma once

#include <vector>

#include "camera/rotation.hpp"

namespace biseam::bench {

// Code values, 0 to 255, not rounded.
struct Colour {
  double luma, cb, cr;
};

// Plane waves and soft edges.  Luma holds frequencies up to 0.3 cycles for each of so many pixels a radian, chroma up to half
// of it, so that half as many chroma samples show as much.  The same for the same number of pixels.
class Scene {
 public:
  explicit Scene(double pixels_per_radian);

  double luma(const Vec3& direction) const;
  double cb(const Vec3& direction) const { return 128 + sum(cb_, direction); }
  double cr(const Vec3& direction) const { return 128 + sum(cr_, direction); }

 private:
  struct Wave {
    Vec3 cycles;  // along each axis, for a step of 1
    double phase, amplitude;
  };
  struct Edge {
    Vec3 normal;
    double distance, steepness, height;  // a plane through the sphere; 1 / radians; code values
  };

  static double sum(const std::vector<Wave>& waves, const Vec3& direction);

  std::vector<Wave> luma_, cb_, cr_;
  std::vector<Edge> edges_;
};

}  // namespace biseam::bench
