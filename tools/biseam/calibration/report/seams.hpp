// Where the lenses meet in a panorama.
#pragma once

#include <array>

#include "calibration/recorded_pairs.hpp"
#include "setup/setup.hpp"

namespace biseam::tool {

// Parts of the panorama of a pair at its full size, around the horizon to the left and to the right of lens 1's axis; of this
// size, or as much as half the panorama has.  Throws Failure when the camera can't be stitched.
inline constexpr Size kSeamPart{560, 720};
std::array<Rgb, 2> seam_parts(const RecordedPair& pair, const Setup& setup);

}  // namespace biseam::tool
