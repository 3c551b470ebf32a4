#include "scene/light.hpp"

#include <algorithm>
#include <numbers>

#include "camera/trigonometry.hpp"
#include "scene/camera.hpp"
#include "scene/noise.hpp"

namespace biseam::scene {

Vec3 towards_sun() {
  static const Vec3 direction = direction_of(52 * kDegree, -33 * kDegree);
  return direction;
}

Vec3 sunlight() { return {1.85, 1.52, 1.08}; }

// Height of a range of hills over the horizon, radians.
static double hills(double longitude, double phase, double height) {
  return height * (0.6 + 0.22 * std::sin(3 * longitude + phase) + 0.13 * std::sin(7 * longitude + 2.3 * phase) +
                   0.05 * std::sin(17 * longitude + 4.1 * phase));
}

static Vec3 clouds_over(Vec3 colour, Vec3 direction, double towards) {
  const double height = -direction.y;
  if (height < 0.04) return colour;
  const Vec3 at{direction.x / (height + 0.12) * 1.3, 3.7, direction.z / (height + 0.12) * 1.3};
  const double cover = smooth_step(0.44, 0.74, cloudy(at, 5)) * smooth_step(0.04, 0.25, height);
  const Vec3 lit = mix(Vec3{0.80, 0.82, 0.88}, Vec3{1.05, 0.97, 0.86}, smooth_step(-0.2, 0.9, towards));
  return mix(colour, lit, 0.75 * cover);
}

Vec3 sky(Vec3 direction) {
  const double elevation = std::asin(std::clamp(-direction.y, -1.0, 1.0));
  const double longitude = std::atan2(direction.x, direction.z);
  const double towards = dot(direction, towards_sun());
  const Vec3 haze = mix(Vec3{0.62, 0.70, 0.80}, Vec3{0.98, 0.84, 0.62}, std::pow(std::max(0.0, towards), 3));
  if (elevation < hills(longitude, 0.4, 11 * kDegree)) return mix(Vec3{0.17, 0.24, 0.20}, haze, 0.35);
  if (elevation < hills(longitude, 2.9, 15 * kDegree)) return mix(Vec3{0.20, 0.28, 0.36}, haze, 0.55);
  const double height = std::max(0.0, std::sin(elevation));
  Vec3 colour = mix(haze, Vec3{0.09, 0.21, 0.50}, 1 - std::pow(1 - height, 2.6));
  colour = clouds_over(colour, direction, towards);
  const double away = std::acos(std::clamp(towards, -1.0, 1.0)) / kDegree;
  const Vec3 warm{1.0, 0.86, 0.60};
  colour = colour + warm * (0.55 * std::exp(-away / 7) + 0.22 * std::exp(-away / 28));
  return mix(colour, Vec3{4, 3.8, 3.3}, 1 - smooth_step(1.1, 1.6, away));
}

Vec3 skylight(Vec3 normal) {
  const double up = 0.5 - 0.5 * normal.y;
  return mix(Vec3{0.26, 0.21, 0.16}, Vec3{0.33, 0.38, 0.48}, up);
}

}  // namespace biseam::scene
