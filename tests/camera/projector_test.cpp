#include "camera/projector.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "ring/reference.hpp"
#include "support/cameras.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

Vec3 any_direction(RandomSource& random) {
  return {double(random.real_between(-1, 1)), double(random.real_between(-1, 1)), double(random.real_between(-1, 1))};
}

double length(const Vec3& v) { return std::sqrt(v.x * v.x + v.y * v.y + v.z * v.z); }

void expect_near(const Vec3& expected, const Vec3& got, double bound) {
  EXPECT_NEAR(expected.x, got.x, bound);
  EXPECT_NEAR(expected.y, got.y, bound);
  EXPECT_NEAR(expected.z, got.z, bound);
}

// Random turns, mounts and coefficients.
Camera any_camera(RandomSource& random) {
  Camera camera = bent_pair();
  for (Lens& lens : camera.lens) {
    lens.mount = 90 * random.between(0, 3);
    lens.turn = {double(random.real_between(-45, 45)), double(random.real_between(-45, 45)),
                 double(random.real_between(-45, 45))};
    lens.k[0] = double(random.real_between(-0.01f, 0.03f));
  }
  return camera;
}

TEST(Projector, EqualsTheDefinition) {
  RandomSource random;
  for (int i = 0; i < 20000; ++i) {
    const Camera camera = any_camera(random);
    const Vec3 direction = any_direction(random);
    const int k = i % 2;
    const Place expected = reference_place(camera, k, direction);
    if (length(direction) < 1e-3 || expected.angle > (camera.lens[k].fov / 2 + kBeyondFov) * kDegree) continue;
    const ImagePoint got = Projector(camera, k).project(direction);
    ASSERT_NEAR(expected.x, got.x, 1e-9);
    ASSERT_NEAR(expected.y, got.y, 1e-9);
    ASSERT_NEAR(expected.angle, got.angle, 1e-12);
  }
}

TEST(Projector, UnprojectIsItsInverse) {
  RandomSource random;
  for (int i = 0; i < 20000; ++i) {
    const Camera camera = any_camera(random);
    const Projector lens(camera, i % 2);
    Vec3 d = any_direction(random);
    const double size = length(d);
    if (size < 1e-3) continue;
    d = {d.x / size, d.y / size, d.z / size};
    const ImagePoint at = lens.project(d);
    if (at.angle > camera.lens[i % 2].fov / 2 * kDegree) continue;
    const Vec3 back = lens.unproject(at.x, at.y);
    ASSERT_NEAR(0, length({back.x - d.x, back.y - d.y, back.z - d.z}), 1e-12);
  }
}

TEST(Projector, LensesLookBackToBack) {
  const Camera camera = city_square();
  const Projector front(camera, 1), back(camera, 0);
  Camera straight = camera;
  straight.lens[1].turn = {};
  expect_near({0, 0, 1}, Projector(straight, 1).unproject(476, 479.8), 1e-15);
  expect_near({0, 0, -1}, back.unproject(475, 471), 1e-15);
  // The world's right is on the left of what looks back.
  EXPECT_LT(back.project({0.1, 0, -1}).x, 475);
  EXPECT_GT(back.project({0, 0.1, -1}).y, 471);
  EXPECT_GT(front.project({0.1, 0, 1}).x, 476);
}

TEST(Projector, ALensTurnsRightUpAndClockwise) {
  Camera camera = city_square();
  Lens& lens = camera.lens[1];
  const double c = std::cos(10 * kDegree), s = std::sin(10 * kDegree);
  lens.turn = {10, 0, 0};
  expect_near({s, 0, c}, Projector(camera, 1).unproject(lens.cx, lens.cy), 1e-15);
  lens.turn = {0, 10, 0};
  expect_near({0, -s, c}, Projector(camera, 1).unproject(lens.cx, lens.cy), 1e-15);
  lens.turn = {0, 0, 10};  // what it sees turns counter-clockwise: the right goes up
  const ImagePoint right = Projector(camera, 1).project({1, 0, 1});
  EXPECT_NEAR(lens.cx + lens.p * kPi / 4 * c, right.x, 1e-9);
  EXPECT_NEAR(lens.cy - lens.p * kPi / 4 * s, right.y, 1e-9);
  // All three: rolled first, pitched then, yawed last.
  lens.turn = {20, 10, 30};
  const double cy = std::cos(20 * kDegree), sy = std::sin(20 * kDegree);
  expect_near({c * sy, -s, c * cy}, Projector(camera, 1).unproject(lens.cx, lens.cy), 1e-15);
}

// Right, down, left and up of a recorded picture that was turned clockwise are up, right, down and left of the upright one.
TEST(Projector, AMountTurnsTheRecordedPictureClockwise) {
  Camera camera = city_square();
  Lens& lens = camera.lens[0];
  const double r = lens.p * kPi / 4;
  const Vec3 right_of_lens0 = {-1, 0, -1};
  const double expected[4][2] = {{r, 0}, {0, r}, {-r, 0}, {0, -r}};
  for (int quarter = 0; quarter < 4; ++quarter) {
    lens.mount = 90 * quarter;
    const ImagePoint at = Projector(camera, 0).project(right_of_lens0);
    EXPECT_NEAR(lens.cx + expected[quarter][0], at.x, 1e-9) << lens.mount;
    EXPECT_NEAR(lens.cy + expected[quarter][1], at.y, 1e-9) << lens.mount;
  }
}

TEST(Projector, DirectionsOfAnyLengthAndOppositeOnesAreHarmless) {
  const Camera camera = city_square();
  const Projector lens(camera, 0);
  for (const double size : {1e-30, 1.0, 1e30}) {
    EXPECT_NEAR(lens.project({0.5, 0.2, -0.7}).x, lens.project({0.5 * size, 0.2 * size, -0.7 * size}).x, 1e-9);
    const ImagePoint opposite = lens.project({0, 0, size});
    EXPECT_EQ(475, opposite.x);
    EXPECT_EQ(471, opposite.y);
    EXPECT_EQ(kPi, opposite.angle);
  }
  EXPECT_TRUE(std::isfinite(lens.project({0, 0, 0}).x));
}

TEST(Projector, SeesUpToTheCircleAndTheEdges) {
  const Camera camera = city_square();
  const Projector lens(camera, 0);
  const auto at = [](double degrees, double x, double y) {
    return Vec3{-std::sin(degrees * kDegree) * x, std::sin(degrees * kDegree) * y, -std::cos(degrees * kDegree)};
  };
  const double diagonal = std::sqrt(0.5);
  EXPECT_TRUE(lens.sees(at(102.9, diagonal, diagonal)));
  EXPECT_FALSE(lens.sees(at(103.1, diagonal, diagonal)));
  const double up = 471.5 / 279.7 / kDegree;  // the picture ends before the circle
  EXPECT_TRUE(lens.sees(at(up - 0.01, 0, -1)));
  EXPECT_FALSE(lens.sees(at(up + 0.01, 0, -1)));
}

}  // namespace
}  // namespace biseam::test
