// Directions and rotations.  Every frame has x to the right, y down and z forward.
#pragma once

namespace biseam {

struct Vec3 {
  double x, y, z;
};

struct Matrix3 {
  double m[3][3];  // rows
};

// Degrees: yaw turns what looks forward to the right, pitch up, roll clockwise as seen by it.
struct Turn {
  double yaw = 0, pitch = 0, roll = 0;
};

inline Vec3 operator*(const Matrix3& a, const Vec3& v) noexcept {
  return {(a.m[0][0] * v.x + a.m[0][1] * v.y) + a.m[0][2] * v.z, (a.m[1][0] * v.x + a.m[1][1] * v.y) + a.m[1][2] * v.z,
          (a.m[2][0] * v.x + a.m[2][1] * v.y) + a.m[2][2] * v.z};
}
Matrix3 operator*(const Matrix3& a, const Matrix3& b) noexcept;
Matrix3 transposed(const Matrix3& a) noexcept;

// From the frame of what is turned to the frame it is turned in.  Rolled first, then pitched, then yawed.
Matrix3 rotation(const Turn& turn) noexcept;

// Clockwise about z, as seen along it, by degrees; exact for quarter turns.
Matrix3 rotation_about_z(double degrees) noexcept;

}  // namespace biseam
