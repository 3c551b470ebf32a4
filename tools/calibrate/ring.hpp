// Where on the ring a lens puts what it recorded, and how that changes with the camera.
#pragma once

#include <opencv2/core/types.hpp>
#include <vector>

#include "calibrate/model.hpp"
#include "camera/projector.hpp"

namespace biseam::calibrate {

// One thing, in the recorded pictures of both lenses.
struct Match {
  int pair;
  cv::Point2d at[2];
  double t_doubt = 1, b_doubt = 1;  // standard deviations of its residual, over what is usual for the matches
};

using Row = std::array<double, kParameters>;

// Radians: the angle round the axis, and that from the plane between the lenses towards lens 1.
struct RingPoint {
  double t, b;
};

// The direction of ring coordinates.
inline Vec3 ring_direction(double t, double b) {
  const SineCosine around = sine_cosine(t), across = sine_cosine(b);
  return {across.cosine * around.cosine, across.cosine * around.sine, across.sine};
}

// What is left of a match when the camera is applied.  t: pixels of a panorama that is 3840 wide.  b: pixels of the recorded
// pictures, brought to about the same size; in radians they would be the fewer the more steeply the radius grows, and the
// steepest lens would seem the likeliest.  What is near is displaced along b, to the positive side.
struct Residual {
  double t, b;
};
inline constexpr double kPixelsPerRadian = 3840 / (2 * kPi);

// By how much b counts more than it would in pixels of the panorama.
double across_scale(const Camera& camera);

struct Remainder {
  Residual off;
  RingPoint at;  // by lens 0
};
std::vector<Remainder> remainders_of(const Values& values, const Frame& frame, const std::vector<Match>& matches);

// Their derivatives by each parameter.
struct Slopes {
  Row t, b;
};
std::vector<Slopes> slopes_of(const Values& values, const Frame& frame, const std::vector<Match>& matches);

}  // namespace biseam::calibrate
