// One lens: how it draws a picture, and its light.
#pragma once

#include "camera/rotation.hpp"

namespace biseam {

inline constexpr double kUsualFov = 195;  // degrees, when nothing is known

// A ray at the angle a (radians) from the axis falls r(a) = p (a + k1 a^3 + k2 a^5 + k3 a^7) pixels from the centre.  Positions
// are those of the recorded picture, an integer being the middle of a pixel.
struct Lens {
  int width = 0, height = 0;    // recorded picture for which the values hold
  double cx = 0, cy = 0;        // where the optical axis meets it
  double p = 0;                 // pixels per radian on the axis
  double k[3] = {0, 0, 0};      // k1, k2, k3
  double fov = kUsualFov;       // degrees across the image circle
  int mount = 0;                // degrees by which the recorded picture is turned clockwise: 0, 90, 180 or 270
  Turn turn;                    // by how much it really points away from its ideal axis, in its own frame
  double vignette[2] = {0, 0};  // v1, v2
  double gain[3] = {1, 1, 1};   // of red, green and blue
};

// The circle of fov degrees that just fits around the middle of a picture.
Lens usual_lens(int width, int height, double fov = kUsualFov) noexcept;

// The same lens's picture of another size; the shapes must agree.
Lens scaled(const Lens& lens, int width, int height) noexcept;

inline double radius(const Lens& lens, double angle) noexcept {
  const double u = angle * angle;
  return lens.p * (angle * (1 + u * (lens.k[0] + u * (lens.k[1] + u * lens.k[2]))));
}

// Pixels per radian along the radius.
inline double radius_slope(const Lens& lens, double angle) noexcept {
  const double u = angle * angle;
  return lens.p * (1 + u * (3 * lens.k[0] + u * (5 * lens.k[1] + u * (7 * lens.k[2]))));
}

// The inverse of radius() on 0 .. last, where radius() must increase.  wanted: pixels; what is beyond radius(last) gives last.
double angle_of_radius(const Lens& lens, double wanted, double last) noexcept;

// What the lens records of light of strength 1 that comes in at an angle (radians): gain (1 + v1 a^2 + v2 a^4).  It
// multiplies code values above black as they are recorded, that is after the camera's transfer curve: a power law turns a
// factor of light into a factor of codes.  A sample is put right by dividing by it.  channel: 0 red, 1 green, 2 blue.
inline double recorded_light(const Lens& lens, int channel, double angle) noexcept {
  const double u = angle * angle;
  return lens.gain[channel] * (1 + u * (lens.vignette[0] + u * lens.vignette[1]));
}

}  // namespace biseam
