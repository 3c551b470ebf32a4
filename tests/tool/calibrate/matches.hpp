// Matches as a camera with known parameters makes them.
#pragma once

#include "calibrate/solve.hpp"
#include "tool/calibrate/world.hpp"

namespace biseam::calibrate {

inline constexpr Frame kFrame{960, 960, {90, 270}};

inline Values some_values() {
  Values values{};
  values[kScale] = std::log(275.0);
  values[kScaleRatio] = 0.01;
  values[kK1] = -0.02;
  values[kK2] = 0.001;
  values[kK3] = 0.0005;
  values[kK1Apart] = 0.002;
  values[kCx0] = 478;
  values[kCy0] = 481;
  values[kCx1] = 483;
  values[kCy1] = 476;
  values[kYaw] = 1.5;
  values[kPitch] = -2;
  values[kRoll] = 0.7;
  values[kRim] = 99;
  return values;
}

// Far things all round, and such on a ground that displaces what is straight below by `parallax` pixels of a 3840 panorama.
inline std::vector<Match> see(const Values& values, double parallax) {
  const Camera camera = camera_of(values, kFrame);
  const Projector lens[2] = {Projector(camera, 0), Projector(camera, 1)};
  std::vector<Match> matches;
  for (int i = 0; i < 400; ++i) {
    const double t = i * 2.399963, b = 0.1 * (2 * hashed(i, 1, 2) - 1);
    const double shift = parallax / kPixelsPerRadian * std::max(0.0, std::cos(b) * std::sin(t));
    Match match{0, {}};
    for (int k = 0; k < 2; ++k) {
      const ImagePoint at = lens[k].project(ring_direction(t, b + (k == 0 ? 0.5 : -0.5) * shift));
      match.at[k] = {at.x + 0.05 * (hashed(i, k, 3) - 0.5), at.y + 0.05 * (hashed(i, k, 4) - 0.5)};
    }
    matches.push_back(match);
  }
  return matches;
}

// A wood: most things at any distance, the rarer the nearer, a third far away.  Lens 1 stands beside the axis by so much of how
// far along it.
inline std::vector<Match> see_wood(const Values& values, double beside_x, double beside_y) {
  const Camera camera = camera_of(values, kFrame);
  const Projector lens[2] = {Projector(camera, 0), Projector(camera, 1)};
  std::vector<Match> matches;
  for (int i = 0; i < 600; ++i) {
    const double t = i * 2.399963, b = 0.1 * (2 * hashed(i, 1, 2) - 1);
    const double near = i % 3 == 0 ? 0 : 20 * std::pow(hashed(i, 5, 6), 3) / kPixelsPerRadian;
    const double along = near * (beside_x * std::sin(t) - beside_y * std::cos(t)) / std::cos(b);
    Match match{0, {}};
    for (int k = 0; k < 2; ++k) {
      const double side = k == 0 ? 0.5 : -0.5;
      const ImagePoint at = lens[k].project(ring_direction(t - side * along, b + side * near));
      match.at[k] = {at.x + 0.05 * (hashed(i, k, 3) - 0.5), at.y + 0.05 * (hashed(i, k, 4) - 0.5)};
    }
    matches.push_back(match);
  }
  return matches;
}

inline Prior wide_prior(const Values& middle) {
  Prior prior;
  prior.values = middle;
  prior.deviations = {0.05, 0.01, 0.02, 0.003, 0.001, 0.002, 0.0004, 0.3, 0.3, 0.3, 0.3, 4, 4, 4, 3, kHeld, kHeld};
  return prior;
}

}  // namespace biseam::calibrate
