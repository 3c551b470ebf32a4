#pragma once

#include "biseam/records.h"

namespace biseam {

// Strips of the panorama in column order: edge, middle, edge.  The edges see lens 0, the middle lens 1; each overlaps its
// neighbour by feather columns on both sides of the seams at columns W/4 and 3W/4.
inline constexpr int kStripCount = 3;

// What a builder needs to know of one strip: its width, angles, lens and orientation.
LensRecord describe_strip(const StitchConfig& config, int strip);

}  // namespace biseam
