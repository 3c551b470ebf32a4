#pragma once

#include <array>

namespace biseam::tool {

// How far the lookup tables reach from a lens' centre, in units of its pixels per radian.
struct Extent {
  double left, right, top, bottom;  // left and top are negative
};

// Largest reach of the table entries of a panorama width x width / 2 whose strips overlap by feather columns on each side of
// the seams.  turn: the first two rows of a lens matrix without offset terms.
Extent table_extent(int width, int feather, const std::array<float, 9>& turn);

}  // namespace biseam::tool
