// A smooth painted sphere with known colours in every direction, seen by ideal fisheyes and as a panorama.
#pragma once

#include <array>
#include <cmath>
#include <numbers>

#include "picture/picture.hpp"

namespace biseam::test {

using Vector = std::array<double, 3>;  // right, down, forward of lens 0

struct FisheyeView {
  int width, height;
  double cx, cy, p;
  int mount = 0;                        // degrees clockwise, about the centre of the lens
  double yaw = 0, pitch = 0, roll = 0;  // degrees
  double fov = 360;                     // black beyond
  double k1 = 0, k2 = 0, k3 = 0;        // of the radius
};

inline double radians(double degrees) { return degrees * std::numbers::pi / 180; }

inline Vector paint(const Vector& d) {
  const double luma = 128 + 45 * d[0] + 35 * d[1] - 25 * d[2] + 12 * std::sin(9 * d[1]) * std::cos(7 * d[0]);
  return {luma, 128 + 40 * d[1] + 20 * d[2], 128 - 30 * d[0] + 15 * d[1]};
}

inline Vector rotate(const Vector& d, double yaw, double pitch, double roll) {
  const double cy = std::cos(radians(yaw)), sy = std::sin(radians(yaw)), cp = std::cos(radians(pitch));
  const double sp = std::sin(radians(pitch)), cr = std::cos(radians(roll)), sr = std::sin(radians(roll));
  const double x = cr * d[0] - sr * d[1], y = sr * d[0] + cr * d[1], z = d[2];
  const double v = cp * y - sp * z, w = sp * y + cp * z;
  return {cy * x + sy * w, v, -sy * x + cy * w};
}

// Of a ray whose radius, in units of the view's p, is known.
inline double angle_of(const FisheyeView& view, double radius) {
  double low = 0, high = std::numbers::pi;
  for (int k = 0; k < 60; ++k) {
    const double a = (low + high) / 2, u = a * a;
    (a * (1 + u * (view.k1 + u * (view.k2 + u * view.k3))) < radius ? low : high) = a;
  }
  return low;
}

// index 1 looks the other way.
inline Vector fisheye_direction(const FisheyeView& view, int index, double u, double v) {
  const double c = std::cos(radians(view.mount)), s = std::sin(radians(view.mount));
  const double a = (u - view.cx) / view.p, b = (v - view.cy) / view.p;
  const double x = c * a + s * b, y = -s * a + c * b, radius = std::hypot(x, y);
  const bool is_straight = view.k1 == 0 && view.k2 == 0 && view.k3 == 0;
  const double angle = is_straight ? radius : angle_of(view, radius);
  const double k = radius < 1e-12 ? 1 : std::sin(angle) / radius;
  const Vector d = rotate({x * k, y * k, std::cos(angle)}, view.yaw, view.pitch, view.roll);
  return index == 0 ? d : Vector{-d[0], d[1], -d[2]};
}

template <class DirectionOf>
tool::Nv12 paint_picture(int width, int height, DirectionOf direction_of) {
  tool::Nv12 picture(width, height);
  const auto byte = [](double value) { return std::uint8_t(std::lround(value)); };
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      picture.luma[std::size_t(y) * std::size_t(width) + std::size_t(x)] = byte(paint(direction_of(x, y))[0]);
    }
  }
  for (int y = 0; y < height; y += 2) {
    for (int x = 0; x < width; x += 2) {
      const Vector colour = paint(direction_of(x + 0.5, y + 0.5));
      std::uint8_t* pair = &picture.chroma[std::size_t(y / 2) * std::size_t(width) + std::size_t(x)];
      pair[0] = byte(colour[1]);
      pair[1] = byte(colour[2]);
    }
  }
  return picture;
}

inline tool::Nv12 paint_fisheye(const FisheyeView& view, int index) {
  tool::Nv12 picture =
      paint_picture(view.width, view.height, [&](double u, double v) { return fisheye_direction(view, index, u, v); });
  for (int y = 0; y < view.height; ++y) {
    for (int x = 0; x < view.width; ++x) {
      if (std::hypot(x - view.cx, y - view.cy) <= radians(view.fov / 2) * view.p) continue;
      picture.luma[std::size_t(y) * std::size_t(view.width) + std::size_t(x)] = 0;
    }
  }
  return picture;
}

// shift: from a pixel's index to where it looks; half a pixel is its middle.
inline tool::Nv12 paint_panorama(int width, double shift = 0.5) {
  return paint_picture(width, width / 2, [&](double x, double y) {
    const double longitude = (x + shift) * 2 * std::numbers::pi / width;
    const double latitude = -std::numbers::pi / 2 + (y + shift) * 2 * std::numbers::pi / width;
    return Vector{std::sin(longitude) * std::cos(latitude), std::sin(latitude), std::cos(longitude) * std::cos(latitude)};
  });
}

// Root mean square difference of two planes.
inline double difference(const std::vector<std::uint8_t>& a, const std::vector<std::uint8_t>& b) {
  double sum = 0;
  for (std::size_t i = 0; i < a.size(); ++i) sum += (double(a[i]) - b[i]) * (double(a[i]) - b[i]);
  return std::sqrt(sum / double(a.size()));
}

inline int worst_difference(const std::vector<std::uint8_t>& a, const std::vector<std::uint8_t>& b) {
  int worst = 0;
  for (std::size_t i = 0; i < a.size(); ++i) worst = std::max(worst, std::abs(int(a[i]) - b[i]));
  return worst;
}

}  // namespace biseam::test
