#include "camera/rotation.hpp"

#include "camera/trigonometry.hpp"

namespace biseam {

namespace {

// Quarter turns have exact entries, so that a mount moves no position by a rounding.
SineCosine of_degrees(double degrees) noexcept {
  if (degrees == 0) return {0, 1};
  if (degrees == 90) return {1, 0};
  if (degrees == 180) return {0, -1};
  if (degrees == 270) return {-1, 0};
  return sine_cosine(degrees * kDegree);
}

}  // namespace

Matrix3 operator*(const Matrix3& a, const Matrix3& b) noexcept {
  Matrix3 product;
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      product.m[i][j] = (a.m[i][0] * b.m[0][j] + a.m[i][1] * b.m[1][j]) + a.m[i][2] * b.m[2][j];
    }
  }
  return product;
}

Matrix3 transposed(const Matrix3& a) noexcept {
  return {{{a.m[0][0], a.m[1][0], a.m[2][0]}, {a.m[0][1], a.m[1][1], a.m[2][1]}, {a.m[0][2], a.m[1][2], a.m[2][2]}}};
}

Matrix3 rotation_about_z(double degrees) noexcept {
  const SineCosine a = of_degrees(degrees);
  return {{{a.cosine, -a.sine, 0}, {a.sine, a.cosine, 0}, {0, 0, 1}}};
}

Matrix3 rotation(const Turn& turn) noexcept {
  const SineCosine yaw = of_degrees(turn.yaw), pitch = of_degrees(turn.pitch);
  const Matrix3 about_y = {{{yaw.cosine, 0, yaw.sine}, {0, 1, 0}, {-yaw.sine, 0, yaw.cosine}}};
  const Matrix3 about_x = {{{1, 0, 0}, {0, pitch.cosine, -pitch.sine}, {0, pitch.sine, pitch.cosine}}};
  return about_y * (about_x * rotation_about_z(turn.roll));
}

}  // namespace biseam
