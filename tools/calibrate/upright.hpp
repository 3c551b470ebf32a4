// Which way is up.
#pragma once

#include <vector>

#include "calibrate/align.hpp"
#include "calibrate/circle.hpp"
#include "calibrate/explain.hpp"

namespace biseam::calibrate {

// Where it is darkest and shows the finest detail, in the world's x and y: most often below, as skies are bright and smooth.  0
// where no side is much different from the others.
Vec3 lower_side(const std::vector<Pair>& pairs, const Circle (&circles)[2], const Frame& frame);

// The overlap tells how the pictures are turned against each other, not what is up.  Light comes from above, and what is near
// is most often the ground below; but it may be a wall, and the sun may stand low.  The camera is turned by quarters where
// nothing speaks against it.
void set_upright(Problem& problem, Explanations& found);

}  // namespace biseam::calibrate
