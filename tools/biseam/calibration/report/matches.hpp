// Matches and what is left of them, drawn over the picture of a lens.
#pragma once

#include <array>
#include <string>

#include "calibrate/finding.hpp"

namespace biseam::tool {

// What is left of a match, pixels of a panorama 3840 wide: less than these; the last class has no end.
inline constexpr std::array<double, 4> kClassEnds = {0.25, 0.5, 1, 2};
inline constexpr std::size_t kClasses = kClassEnds.size() + 1;
std::size_t class_of(double pixels);
inline std::string class_name(std::size_t index) { return {'c', char('0' + index)}; }

// How many of the kept matches are in each class.
std::array<std::size_t, kClasses> count_classes(const calibrate::Finding& finding);

inline constexpr int kStretch = 40;  // by which what is left is drawn longer than it is
inline constexpr int kLongest = 4;   // pixels of the panorama that are drawn; what is wrong may be off by any number of them

// An SVG element that fits over the recorded picture: each match a dot and a line towards where the other lens sees it, classes
// c0, c1, ..., and what is taken for wrong in the class wrong; the image circle.
std::string draw_matches(const calibrate::Finding& finding, int lens);

}  // namespace biseam::tool
