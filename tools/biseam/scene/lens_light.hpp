// In what the light of the lenses differs: exposure, white balance, falloff and flare.  The truth's own light lies between
// both.
#pragma once

#include "scene/render.hpp"

namespace biseam::scene {

struct LightDifference {
  double exposure = 0;     // stops by which lens 0 is the brighter one
  double drift = 0;        // stops by which it becomes so, a second
  double temperature = 0;  // kelvin by which lens 0's white balance is set higher, so that it shows things warmer
  double vignette = 0;     // share of its light that lens 0 lacks at the image circle's edge
  double flare = 0;        // veil over lens 0 where it is brightest; white paper in the sun is about 1
  int from = 0;            // frame before which all but the drift is left out
};

// Factors of linear light: half of the difference goes to either lens.
Vec3 lens_gain(const LightDifference& difference, int lens, int frame, double seconds);

// What falloff and flare make of lens 0's light, before its gain.  The veil is brightest at the circle's right end.
void shade(Frame& light, const LightDifference& difference, const Fisheye& lens0);

}  // namespace biseam::scene
