// The camera as the numbers that are sought.
#pragma once

#include <array>

#include "camera/camera.hpp"

namespace biseam::calibrate {

// Lens 0 keeps its ideal direction, and lens 1's turn is the one between them.  What a pair of lenses shares and what makes
// them different stand apart, as the first is known much worse from an overlap than the second.
enum Parameter {
  kScale,       // mean of the logarithms of p
  kScaleRatio,  // logarithm of p of lens 1 / p of lens 0
  kK1,
  kK2,       // means
  kK3,       // of both: how much they differ isn't seen
  kK1Apart,  // lens 1's - lens 0's
  kK2Apart,
  kCx0,  // pixels
  kCy0,
  kCx1,
  kCy1,
  kYaw,  // degrees
  kPitch,
  kRoll,
  kRim,      // degrees from the axis where both circles end
  kBesideX,  // where lens 1 stands beside the axis of lens 0: by so much nearness displaces along the ring, of what it does
             // across
  kBesideY,
  kParameters
};
using Values = std::array<double, kParameters>;

// What a change of one panorama pixel is about, for each of them.
extern const Values kSteps;

struct Frame {
  int width = 0, height = 0;  // of one lens's picture
  int mount[2] = {0, 0};
};

// Its fov is twice the rim, or less where the radius would not increase so far.
Camera camera_of(const Values& values, const Frame& frame);

}  // namespace biseam::calibrate
