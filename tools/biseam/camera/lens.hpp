// One lens with every value settled.
#pragma once

#include <string>

#include "picture/quarter_turn.hpp"
#include "profile/settings.hpp"

namespace biseam::tool {

inline constexpr double kUsualFov = 195;  // degrees, when nothing is said

// Degrees by which a lens really points away from its nominal axis: yaw turns it right, pitch up, roll clockwise.
struct Turn {
  double yaw = 0, pitch = 0, roll = 0;
};

// Equidistant: a direction at the angle a from the axis is imaged p * a pixels from the centre.
struct Lens {
  Point centre;       // pixels of the upright picture, an integer being the centre of a pixel
  double p = 0;       // pixels per radian
  double reach = 90;  // degrees off axis that are in the picture along the horizon, on the shorter side
  Turn turn;
  int index = 0;
  bool is_cut = false;  // the reach ends at the picture's edge, not at the circle
};

// Fills what is open: the middle of the picture, and a circle of fov degrees that just fits around the centre.
// recorded: the picture before its mounting is undone.  index and recorded are told in a notice of what was assumed.
Lens settle_lens(const profile::LensSettings& settings, Size recorded, int index);

}  // namespace biseam::tool
