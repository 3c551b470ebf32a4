// How much a match can be trusted.
#pragma once

#include <vector>

#include "calibrate/solve.hpp"

namespace biseam::calibrate {

// Deviations in pixels become doubts, whose median is 1.
void compare_doubts(std::vector<Match>& matches);

// Where many matches are off along the ring, which no parallax reaches, they are off across it as well: patterns too fine for
// the pictures, water, leaves.  solution: of the matches.
void doubt_places(std::vector<Match>& matches, const Solution& solution);

}  // namespace biseam::calibrate
