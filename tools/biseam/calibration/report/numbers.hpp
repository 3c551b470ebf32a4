// What was found, as tables and as a diagram.
#pragma once

#include <string>

#include "calibrate/finding.hpp"

namespace biseam::tool {

// A table element: every value as the profile has it, with its standard deviation.
std::string parameter_table(const calibrate::Finding& finding);

// Where the eighths of the ring are, as lens 1 looks, from t = -pi on.
inline constexpr const char* kOctantNames[calibrate::kOctants] = {
    "left, above", "above, left", "above, right", "right, above", "right, below", "below, right", "below, left", "left, below"};

// An SVG element: the ring as lens 1 looks along its axis, with what is left in each eighth; and the same numbers as a table.
std::string octant_ring(const calibrate::Octants& octants);
std::string octant_table(const calibrate::Octants& octants);

}  // namespace biseam::tool
