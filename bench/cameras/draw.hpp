// Cameras at random.
#pragma once

#include <cstdint>
#include <random>

#include "camera/camera.hpp"

namespace biseam::bench {

struct Drawn {
  Camera camera;
  double gain[2];       // factors of the code values
  double vignette[2];   // part of the light that is lost at the rim
  double noise;         // standard deviation, code values
  double ground = 1.5;  // metres below
  bool stacked;         // lens 0's picture above lens 1's, or to its left
};

// size: of one lens's square picture.  most_k3: both lenses have one k3, to either side of 0.
Drawn draw_camera(std::uint64_t seed, int size, double most_k3);

}  // namespace biseam::bench
