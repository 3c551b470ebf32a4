// Resampling a fisheye picture onto the grid the engine wants.
#pragma once

#include "camera/lens.hpp"

namespace biseam::tool {

// The picture that the lens would have taken at another scale and centre, and without its yaw and pitch.  The roll stays.
struct WarpTarget {
  Size size;
  Point centre;
  double p = 0;
};

// Lanczos, widened where the picture shrinks; outside the source its nearest edge pixel is repeated.
Nv12 warp_fisheye(const Nv12& source, const Lens& lens, const WarpTarget& target);

}  // namespace biseam::tool
