// The ring that both lenses see, unrolled as a camera says.
#pragma once

#include <array>

#include "calibration/recorded_pairs.hpp"
#include "camera/camera.hpp"

namespace biseam::tool {

inline constexpr int kQuarters = 4;

// From the ring's left end, as lens 1 looks, over the top; each has what lens 0 sees, below that what lens 1 sees, and below
// that the difference of the two: black where they agree.  columns: of the whole ring.  reach: radians to either side of the
// plane between the lenses.
std::array<Rgb, kQuarters> ring_strips(const RecordedPair& pair, const Camera& camera, int columns, double reach);

}  // namespace biseam::tool
