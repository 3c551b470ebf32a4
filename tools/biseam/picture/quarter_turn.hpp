// Undoing the mounting of a sensor.
#pragma once

#include "picture/picture.hpp"

namespace biseam::tool {

// The upright picture of one that was turned clockwise by 0, 90, 180 or 270 degrees.  Loses nothing.  The second one reuses
// the memory of upright, which must not be the picture's.
Nv12 undo_quarter_turn(const Nv12View& picture, int degrees);
void undo_quarter_turn(const Nv12View& picture, int degrees, Nv12& upright);

struct Point {
  double x = 0, y = 0;
};

// Where a point of a turned picture of the given size lies in the upright one.
Point undo_quarter_turn(Point point, Size turned, int degrees);

}  // namespace biseam::tool
