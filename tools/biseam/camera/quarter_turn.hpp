// Undoing the mounting of a sensor.
#pragma once

#include "camera/settings.hpp"

namespace biseam::tool {

// The upright picture of one that was turned clockwise by 0, 90, 180 or 270 degrees.  Loses nothing.
Nv12 undo_quarter_turn(const Nv12& picture, int degrees);

struct Point {
  double x = 0, y = 0;
};

// Where a point of a turned picture of the given size lies in the upright one.
Point undo_quarter_turn(Point point, Size turned, int degrees);

}  // namespace biseam::tool
