// Which way is up.
#pragma once

#include <vector>

#include "calibrate/align.hpp"
#include "calibrate/circle.hpp"
#include "calibrate/explain.hpp"

namespace biseam::calibrate {

// Where it is darkest, in the world's x and y: most often below.  0 where nothing is much darker than the rest.
Vec3 dark_side(const std::vector<Pair>& pairs, const Circle (&circles)[2], const Frame& frame);

// The overlap tells how the pictures are turned against each other, not what is up.  Light comes from above, and what is near
// is most often the ground below; but it may be a wall, and the sun may stand low.  The camera is turned by quarters where
// nothing speaks against it.
void set_upright(Problem& problem, Explanations& found);

}  // namespace biseam::calibrate
