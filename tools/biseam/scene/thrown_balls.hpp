// What moves in the virtual place: two balls on pedestals that fly round the camera, lap after lap, over both seams.
#pragma once

#include <array>

#include "scene/shapes.hpp"

namespace biseam::scene {

using ThrownBalls = std::array<Shape, 2>;  // ellipsoids with three equal half axes

// Where they are so many seconds after they lay on their pedestals.
ThrownBalls thrown_balls(double seconds);

constexpr double kPedestalHeight = 0.88;  // metres

}  // namespace biseam::scene
