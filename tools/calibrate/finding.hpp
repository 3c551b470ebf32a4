// What is known of a camera, and how well.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "calibrate/ring.hpp"
#include "profile/settings.hpp"

namespace biseam::calibrate {

// One thing in both lenses' pictures, as the camera explains it.
struct ExplainedMatch {
  Match match;
  RingPoint at;  // by lens 0
  double around,
      across;  // radians on the ring from where lens 0 sees it to where lens 1 does, beyond what its nearness explains
  bool kept;   // false: most likely a wrong match

  double pixels() const;  // of a panorama 3840 wide
};

// How far the lenses stand apart, as a part of the distance of the ground, or wall, that is seen; metres can't be known.
struct Baseline {
  double share, deviation;
};

inline constexpr int kOctants = 8;
using Octants = std::array<double, kOctants>;  // from t = -pi on; pixels of a panorama 3840 wide; negative: no matches there

struct Finding {
  profile::CameraSettings settings;
  Camera start, camera;  // the first guess, and what was found, not rounded
  Values deviations{};   // standard deviations
  Octants left{};        // what is left of the matches that are explained
  // Standard deviations of how far both lenses may disagree about far things, over the ring and in its worst eighth; pixels of
  // a panorama 3840 wide.
  double seam_deviation = 0, worst_deviation = 0;
  double kept = 0;                   // share of the matches that are explained
  std::size_t tracks = 0;            // within the lenses; 0: the camera doesn't turn enough
  std::optional<Baseline> baseline;  // none where it doesn't show
  std::vector<ExplainedMatch> matches;
  std::string summary;  // lines: the camera, its standard deviations, the residual in each eighth of the ring

  double worst() const;  // of what is left in the eighths
};

struct Estimate;
Finding finding_of(const Estimate& found);

// To so many decimals.
double rounded(double value, int digits);

}  // namespace biseam::calibrate
