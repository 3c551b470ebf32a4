#include "camera/view.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "camera/trigonometry.hpp"
#include "ring/reference.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

TEST(View, TheMiddleLooksForward) {
  const View view{200, 100, {}};
  const Vec3 d = direction_at(view, 99.5, 49.5);
  EXPECT_NEAR(0, d.x, 1e-15);
  EXPECT_NEAR(0, d.y, 1e-15);
  EXPECT_NEAR(1, d.z, 1e-15);
  EXPECT_GT(direction_at(view, 120, 49.5).x, 0.1);
  EXPECT_GT(direction_at(view, 99.5, 60).y, 0.1);
  EXPECT_NEAR(-1, direction_at(view, 99.5, -0.5).y, 1e-15);
}

TEST(View, TurnsRightUpAndClockwise) {
  EXPECT_NEAR(std::sin(30 * kDegree), direction_at({200, 100, {30, 0, 0}}, 99.5, 49.5).x, 1e-15);
  EXPECT_NEAR(-std::sin(30 * kDegree), direction_at({200, 100, {0, 30, 0}}, 99.5, 49.5).y, 1e-15);
  // A viewer who leans clockwise has lower things at the right.
  EXPECT_GT(direction_at({200, 100, {0, 0, 30}}, 120, 49.5).y, 0.1);
}

TEST(View, EqualsTheDefinitionAndHasAnInverse) {
  RandomSource random;
  for (int i = 0; i < 20000; ++i) {
    const View view{
        2 * random.between(32, 8192),
        2 * random.between(16, 4096),
        {double(random.real_between(-400, 400)), double(random.real_between(-90, 90)), double(random.real_between(-180, 180))}};
    const double x = double(random.real_between(0, 1)) * view.width - 0.5,
                 y = double(random.real_between(0, 1)) * view.height - 0.5;
    const Vec3 expected = reference_direction(view, x, y), got = direction_at(view, x, y);
    ASSERT_NEAR(expected.x, got.x, 2e-14);
    ASSERT_NEAR(expected.y, got.y, 2e-14);
    ASSERT_NEAR(expected.z, got.z, 2e-14);
    const ViewPoint back = shown_at(view, got);
    const double level = std::cos(latitude_of(view, y));
    ASSERT_NEAR(y, back.y, 1e-6);
    const double apart = std::remainder(back.x - x, view.width);
    ASSERT_NEAR(0, apart * level, 1e-6);
  }
}

}  // namespace
}  // namespace biseam::test
