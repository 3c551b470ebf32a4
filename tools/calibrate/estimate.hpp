// From pictures to the camera.
#pragma once

#include <array>
#include <optional>
#include <vector>

#include "calibrate/align.hpp"
#include "calibrate/circle.hpp"
#include "calibrate/solve.hpp"

namespace biseam::calibrate {

inline constexpr int kLeastSide = 160;  // pixels

struct Estimate {
  Camera start, camera;  // the first guess, and what was found
  Frame frame;
  std::optional<Circle> circle[2];
  std::vector<Match> matches;  // to which the solution's remainders and shares belong
  Solution solution;
  Values deviations{};        // standard deviations of the solution's values
  double loose_rim = 0;       // the rim's deviation, if lenses were half as much alike as they are thought to be
  double seam_deviation = 0;  // pixels of a 3840 panorama: by how much both lenses may disagree about far things, over the ring
  double worst_deviation = 0;  // in the worst eighth of it
  std::size_t tracks = 0;      // within the lenses
  double kept = 0;             // share of the matches that are not wrong
};

// What there is to begin with.
struct Known {
  Values values{};
  Frame frame;                           // of the pairs, with the mounts
  std::array<bool, kParameters> held{};  // values that are not to change
};

// pairs: at least one, all of one size.  Throws Refusal.
Estimate estimate(const std::vector<Pair>& pairs, const std::optional<Known>& known, const ShareWork& share_work);

}  // namespace biseam::calibrate
