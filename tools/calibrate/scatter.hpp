// How matches scatter about the camera that explains them.
#pragma once

#include "calibrate/ring.hpp"

namespace biseam::calibrate {

// Part of the matches is wrong; the others are off by noise, each as much as it is in doubt.  Of those, part is near by any
// parallax up to kMostNear, and the rest is far away or lies on a ground.
struct Scatter {
  double noise = 4;  // pixels, where the doubt is 1
  double wrong = 0.3, near = 0.3;
  bool near_known = false;
  // Neighbours err alike, and so does what stands still before a camera on a tripod: so many matches tell as much as one alone.
  double alike = 1;
  // Near things lie at all distances, the rarer the nearer, so that across the ring hardly anything is where what is far would
  // be, nor all on one ground: noise is what is left along it.
  bool scattered = false;
};
inline constexpr double kMostNear = 40;        // pixels
inline constexpr double kWrongArea = 60 * 60;  // square pixels where wrong matches lie

// What a match probably is; what is missing to 1, wrong.
struct Share {
  double far, ground, near;
  double good() const { return far + ground + near; }
};

// A residual and its standard deviations; pixels.
struct Observed {
  Residual off;
  double t_noise, b_noise;
  double parallax;   // of the ground where the match is; 0 where there is none
  double slant = 0;  // by how much nearness displaces along the ring, for each pixel across it
};
Share share_of(const Observed& observed, const Scatter& scatter);
double log_likelihood(const Observed& observed, const Scatter& scatter);

// What a match asks of a quantity in the normal equations: a bound of the second derivative of its cost, and the first one.
struct Pull {
  double stiffness, slope;
};
// Of what is near: its parallax may be anything that is not negative.
Pull near_pull(double b, double noise, double share, const Scatter& scatter);

}  // namespace biseam::calibrate
