#include "scene/camera.hpp"

#include <numbers>

namespace biseam::scene {

using std::numbers::pi;

Vec3 direction_of(double longitude, double latitude) {
  const double level = std::cos(latitude);
  return {std::sin(longitude) * level, std::sin(latitude), std::cos(longitude) * level};
}

Vec3 PanoramaView::direction(Position at) const {
  return direction_of((at.u + 1) * (2 * pi / width), -pi / 2 + (at.v + 1) * (pi / height));
}

Position PanoramaView::project(Vec3 direction) const {
  double longitude = std::atan2(direction.x, direction.z);
  if (longitude < 0) longitude += 2 * pi;
  const double latitude = std::atan2(direction.y, std::hypot(direction.x, direction.z));
  return {longitude * (width / (2 * pi)) - 1, (latitude + pi / 2) * (height / pi) - 1};
}

// Turns between the world and the frame of a lens (z along its axis): half a turn about the vertical for fisheye 1.
static Vec3 turned(int index, Vec3 v) { return index == 0 ? v : Vec3{-v.x, v.y, -v.z}; }

Fisheye Fisheye::fitting(int index, int size, double field_of_view) {
  const double middle = (size - 1) / 2.0;
  return {index, size, (size / 2.0) / (field_of_view / 2), field_of_view, {middle, middle}};
}

bool Fisheye::sees(Position at) const {
  const double a = at.u - centre.u, b = at.v - centre.v;
  return std::sqrt(a * a + b * b) <= pixels_per_radian * field_of_view / 2;
}

Vec3 Fisheye::direction(Position at) const {
  const double a = at.u - centre.u, b = at.v - centre.v;
  const double radius = std::sqrt(a * a + b * b);
  if (radius == 0) return turned(index, {0, 0, 1});
  const double angle = radius / pixels_per_radian;
  return turned(index, {std::sin(angle) * a / radius, std::sin(angle) * b / radius, std::cos(angle)});
}

Position Fisheye::project(Vec3 direction) const {
  const Vec3 d = turned(index, direction);
  const double r = std::hypot(d.x, d.y);
  if (r == 0) return centre;
  const double radius = pixels_per_radian * std::atan2(r, d.z);
  return {centre.u + radius * d.x / r, centre.v + radius * d.y / r};
}

Vec3 Fisheye::pupil(double baseline) const { return turned(index, {0, 0, baseline / 2}); }

}  // namespace biseam::scene
