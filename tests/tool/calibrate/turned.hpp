// A camera that turns in the painted place.
#pragma once

#include <vector>

#include "tool/calibrate/world.hpp"

namespace biseam::calibrate {

inline constexpr int kTurningSide = 480;
inline constexpr int kTurningPairs = 5;

inline Matrix3 turning_pose(int i) { return rotation({7.0 * i, i % 2 * 5.0, 3.0 * (i % 3)}); }

// The painted place again and again, while the camera turns.
inline std::vector<Pair> film_turning(const Camera& camera) {
  std::vector<Pair> pairs;
  for (int i = 0; i < kTurningPairs; ++i) {
    const Matrix3 pose = turning_pose(i);
    pairs.push_back(photograph(camera, 1e9, 1, [pose](const Vec3& d) { return pose * d; }));
  }
  return pairs;
}

// Off by some pixels at the rim.
inline Values rough_guess(const Camera& camera) {
  Values values{};
  values[kScale] = std::log(camera.lens[0].p) + 0.02;
  values[kK1] = 0;
  values[kCx0] = camera.lens[0].cx + 1;
  values[kCy0] = camera.lens[0].cy - 1;
  values[kCx1] = camera.lens[1].cx;
  values[kCy1] = camera.lens[1].cy + 1;
  values[kYaw] = camera.lens[1].turn.yaw;
  values[kPitch] = camera.lens[1].turn.pitch + 0.2;
  values[kRoll] = camera.lens[1].turn.roll;
  values[kRim] = 100;
  return values;
}

}  // namespace biseam::calibrate
