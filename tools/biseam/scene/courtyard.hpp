// What stands still in the virtual place: a courtyard with signs, columns and potted plants around the camera.
#pragma once

#include <memory>
#include <vector>

#include "scene/shapes.hpp"

namespace biseam::scene {

constexpr double kEyeHeight = 1.5;  // of the camera over the floor, metres
constexpr double kHalfYard = 5.2;   // from the camera to each wall, metres

constexpr double y_of_height(double height) { return kEyeHeight - height; }

struct Courtyard {
  std::vector<Shape> shapes;
  std::vector<Bounds> footprints;              // of what stands on the floor and darkens it around its foot
  std::vector<std::unique_ptr<Board>> boards;  // that the shapes' finishes point to
};

Courtyard build_courtyard();

}  // namespace biseam::scene
