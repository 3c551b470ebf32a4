#include "calibrate/model.hpp"

#include <cmath>

#include "camera/trigonometry.hpp"

namespace biseam::calibrate {

const Values kSteps = {1e-3, 1e-3, 1e-3, 1e-3, 3e-4, 1e-3, 1e-3, 0.5, 0.5, 0.5, 0.5, 0.1, 0.1, 0.1, 0.1, 0.05, 0.05};

namespace {

// The last angle, in radians, up to which the radius increases; `most` at most.
double increasing_to(const Lens& lens, double most) {
  constexpr int kPieces = 400;
  for (int i = 1; i <= kPieces; ++i) {
    if (radius_slope(lens, i * most / kPieces) <= 0) return (i - 1) * most / kPieces;
  }
  return most;
}

}  // namespace

Camera camera_of(const Values& values, const Frame& frame) {
  Camera camera;
  for (int k = 0; k < 2; ++k) {
    Lens& lens = camera.lens[k];
    const double half = k == 0 ? -0.5 : 0.5;
    lens.width = frame.width;
    lens.height = frame.height;
    lens.mount = frame.mount[k];
    lens.cx = values[k == 0 ? kCx0 : kCx1];
    lens.cy = values[k == 0 ? kCy0 : kCy1];
    lens.p = std::exp(values[kScale] + half * values[kScaleRatio]);
    lens.k[0] = values[kK1] + half * values[kK1Apart];
    lens.k[1] = values[kK2] + half * values[kK2Apart];
    lens.k[2] = values[kK3];
    lens.fov = 2 / kDegree * increasing_to(lens, values[kRim] * kDegree);
  }
  camera.lens[1].turn = {values[kYaw], values[kPitch], values[kRoll]};
  return camera;
}

}  // namespace biseam::calibrate
