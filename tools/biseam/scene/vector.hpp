// Three-component vectors: positions in metres (x right, y down, z forward, the camera at the origin), directions, and
// linear-light colours.
#pragma once

#include <cmath>

namespace biseam::scene {

struct Vec3 {
  double x = 0, y = 0, z = 0;
};

constexpr Vec3 operator+(Vec3 a, Vec3 b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
constexpr Vec3 operator-(Vec3 a, Vec3 b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
constexpr Vec3 operator-(Vec3 a) { return {-a.x, -a.y, -a.z}; }
constexpr Vec3 operator*(Vec3 a, Vec3 b) { return {a.x * b.x, a.y * b.y, a.z * b.z}; }
constexpr Vec3 operator*(Vec3 a, double k) { return {a.x * k, a.y * k, a.z * k}; }
constexpr Vec3 operator*(double k, Vec3 a) { return a * k; }
constexpr double dot(Vec3 a, Vec3 b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline double length(Vec3 a) { return std::sqrt(dot(a, a)); }
inline Vec3 normalised(Vec3 a) { return a * (1.0 / length(a)); }
constexpr Vec3 mix(Vec3 a, Vec3 b, double k) { return a + (b - a) * k; }
constexpr double mix(double a, double b, double k) { return a + (b - a) * k; }

// 0 below low, 1 above high, smooth between.
constexpr double smooth_step(double low, double high, double x) {
  const double t = x <= low ? 0.0 : x >= high ? 1.0 : (x - low) / (high - low);
  return t * t * (3 - 2 * t);
}

}  // namespace biseam::scene
