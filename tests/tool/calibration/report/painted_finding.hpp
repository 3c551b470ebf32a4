// A camera as it would be found, without the search.
#pragma once

#include "calibrate/finding.hpp"
#include "calibration/recorded_pairs.hpp"
#include "picture/frame_over.hpp"
#include "tool/calibration/photographed.hpp"

namespace biseam::tool {

inline RecordedPair recorded(const Nv12& picture) { return {*frame_over(picture), nullptr, Layout::side_by_side, "pair"}; }

inline const RecordedPair& photographed_pair() {
  static const Nv12 picture = both_circles(photographed());
  static const RecordedPair pair = recorded(picture);
  return pair;
}

// A direction seen by lens 0, and one `around` radians further round the ring and `across` towards lens 0 seen by lens 1.
inline calibrate::ExplainedMatch match_at(const Camera& camera, double t, double b, double around, double across) {
  calibrate::ExplainedMatch match{{0, {}}, {t, b}, around, across, true};
  const Vec3 seen[2] = {calibrate::ring_direction(t, b),
                        calibrate::ring_direction(t + around / sine_cosine(b).cosine, b - across)};
  for (int k = 0; k < 2; ++k) {
    const ImagePoint at = Projector(camera, k).project(seen[k]);
    match.match.at[k] = {at.x, at.y};
  }
  return match;
}

inline calibrate::Finding painted_finding() {
  calibrate::Finding finding;
  finding.camera = finding.start = calibrate::some_camera(kSide);
  finding.start.lens[1].turn = {};
  finding.settings.picture = profile::Size{kSide, kSide};
  for (int k = 0; k < 2; ++k) {
    const Lens& lens = finding.camera.lens[k];
    profile::LensSettings& to = finding.settings.lens[k];
    to.cx = lens.cx;
    to.cy = lens.cy;
    to.p = lens.p;
    to.k = {lens.k[0], lens.k[1], lens.k[2]};
    to.fov = lens.fov;
    to.mount = lens.mount;
    to.yaw = lens.turn.yaw;
    to.pitch = lens.turn.pitch;
    to.roll = lens.turn.roll;
  }
  finding.deviations.fill(0.125);
  finding.left = {0.1, 0.3, 0.6, 1.5, 2.5, -1, 0.2, 0.2};
  finding.kept = 0.75;
  for (int i = 0; i < 8; ++i) {
    finding.matches.push_back(match_at(finding.camera, i * kPi / 4, 0.02, 0.3e-3 * i, 0.2e-3 * i));
    finding.matches.back().kept = i < 6;
  }
  return finding;
}

}  // namespace biseam::tool
