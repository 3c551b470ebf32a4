// What a camera that turns tells of its lenses, in the middle as at the rim.
#pragma once

#include <optional>
#include <vector>

#include "calibrate/turning.hpp"

namespace biseam::calibrate {

// What the tracks ask of the values before kYaw: 0.5 (v - values) stiffness (v - values) is their cost near it.
struct InLens {
  Values values{};
  cv::Mat1d stiffness;
  double noise = 0;  // pixels of a panorama 3840 wide
  std::size_t tracks = 0;
};

// From a guess, with the rotations and the drifts made better, too.  below: direction of the ground, of length 1.  Other things
// that are near move by more than the turn; they count little.
InLens solve_turnings(std::vector<Turning>& turnings, const Values& guess, const Frame& frame, const Vec3& below);

// Scale and distortion apart, which the ring alone hardly tells.  Nothing where the camera stands, or moves among near things.
std::optional<InLens> look_in_lenses(const std::vector<Pair>& pairs, Values values, const Frame& frame, const Vec3& below,
                                     const ShareWork& share_work);

// Into other values, whose rim stays where it is in the picture.
void take_in_lens(const InLens& found, const Frame& frame, Values& values);

}  // namespace biseam::calibrate
