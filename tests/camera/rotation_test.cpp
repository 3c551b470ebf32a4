#include "camera/rotation.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "support/random_source.hpp"

namespace biseam::test {
namespace {

constexpr Matrix3 kIdentity = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};

void expect_vector(const Vec3& v, double x, double y, double z, double near = 1e-15) {
  EXPECT_NEAR(v.x, x, near);
  EXPECT_NEAR(v.y, y, near);
  EXPECT_NEAR(v.z, z, near);
}

void expect_matrix(const Matrix3& got, const Matrix3& want, double near) {
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) EXPECT_NEAR(got.m[i][j], want.m[i][j], near) << i << " " << j;
  }
}

double determinant(const Matrix3& a) {
  double sum = 0;
  for (int k = 0; k < 3; ++k) {
    const int i = (k + 1) % 3, j = (k + 2) % 3;
    sum += a.m[0][k] * (a.m[1][i] * a.m[2][j] - a.m[1][j] * a.m[2][i]);
  }
  return sum;
}

// One angle after the other: a point goes by an angle from one axis towards another.
Vec3 turned(Vec3 v, const Turn& turn) {
  constexpr double kDegrees = 0.017453292519943295;
  const auto go = [](double& from, double& to, double degrees) {
    const double c = std::cos(degrees * kDegrees), s = std::sin(degrees * kDegrees), old = from;
    from = c * old - s * to;
    to = s * old + c * to;
  };
  go(v.x, v.y, turn.roll);   // right towards down
  go(v.y, v.z, turn.pitch);  // down towards forward
  go(v.z, v.x, turn.yaw);    // forward towards right
  return v;
}

TEST(Rotation, EachAngleTurnsItsOwnWay) {
  expect_vector(rotation({30, 0, 0}) * Vec3{0, 0, 1}, 0.5, 0, std::sqrt(0.75));    // forward, to the right
  expect_vector(rotation({0, 30, 0}) * Vec3{0, 0, 1}, 0, -0.5, std::sqrt(0.75));   // forward, up
  expect_vector(rotation({0, 0, 30}) * Vec3{0, -1, 0}, 0.5, -std::sqrt(0.75), 0);  // up, to the right: clockwise
  expect_vector(rotation({0, 0, 30}) * Vec3{0, 0, 1}, 0, 0, 1);
}

TEST(Rotation, OfNothingIsNothing) { expect_matrix(rotation({}), kIdentity, 0); }

TEST(Rotation, RollsThenPitchesThenYaws) {
  RandomSource random;
  const auto any = [&](float reach) { return double(random.real_between(-reach, reach)); };
  for (int n = 0; n < 500; ++n) {
    const Turn turn{any(400), any(400), any(400)};
    const Vec3 v{any(1), any(1), any(1)}, want = turned(v, turn);
    expect_vector(rotation(turn) * v, want.x, want.y, want.z, 1e-14);
  }
}

TEST(Rotation, KeepsLengthsAnglesAndHandedness) {
  RandomSource random;
  const auto any = [&] { return double(random.real_between(-360, 360)); };
  for (int n = 0; n < 500; ++n) {
    const Matrix3 r = rotation({any(), any(), any()});
    expect_matrix(r * transposed(r), kIdentity, 1e-14);
    EXPECT_NEAR(determinant(r), 1, 1e-14);
  }
}

// No rounding, or positions would move with the mount.
TEST(Rotation, QuarterTurnsAreExact) {
  const double quarters[4][2] = {{0, 1}, {1, 0}, {0, -1}, {-1, 0}};  // sine, cosine
  for (int k = 0; k < 4; ++k) {
    const double s = quarters[k][0], c = quarters[k][1];
    expect_matrix(rotation_about_z(90 * k), {{{c, -s, 0}, {s, c, 0}, {0, 0, 1}}}, 0);
    expect_matrix(rotation({0, 0, 90.0 * k}), rotation_about_z(90 * k), 0);
    expect_matrix(rotation({90.0 * k, 0, 0}), {{{c, 0, s}, {0, 1, 0}, {-s, 0, c}}}, 0);
    expect_matrix(rotation({0, 90.0 * k, 0}), {{{1, 0, 0}, {0, c, -s}, {0, s, c}}}, 0);
  }
}

TEST(Matrix3, ProductsApplyTheRightOneFirst) {
  const Matrix3 a = {{{1, 2, 3}, {4, 5, 6}, {7, 8, 10}}}, b = {{{-1, 0, 2}, {3, 1, -2}, {0, 5, 4}}};
  expect_matrix(a * b, {{{5, 17, 10}, {11, 35, 22}, {17, 58, 38}}}, 0);
  const Vec3 v{2, -3, 5}, inner = b * v, whole = (a * b) * v;
  expect_vector(a * inner, whole.x, whole.y, whole.z, 0);
  expect_matrix(transposed(a), {{{1, 4, 7}, {2, 5, 8}, {3, 6, 10}}}, 0);
}

}  // namespace
}  // namespace biseam::test
