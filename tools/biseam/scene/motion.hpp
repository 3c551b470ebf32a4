// How the camera is held while it films.
#pragma once

#include <cstdint>

#include "camera/rotation.hpp"
#include "scene/render.hpp"

namespace biseam::scene {

struct Motion {
  double shake = 0;  // degrees, standard deviation of each angle of a hand that is unsteady
  double turn = 0;   // degrees to the right with every frame
  std::uint64_t seed = 1;
};

// From how the camera stands in the first frame.
Turn attitude(const Motion& motion, int frame, double seconds);

// A camera that is turned about the place's origin.
View turned(const View& view, const Turn& turn);

}  // namespace biseam::scene
