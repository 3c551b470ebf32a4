#include "scene/light.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "scene/camera.hpp"
#include "support/random_source.hpp"

namespace biseam::scene {
namespace {

constexpr double kDegree = std::numbers::pi / 180;

double brightness(Vec3 light) { return 0.2126 * light.x + 0.7152 * light.y + 0.0722 * light.z; }

TEST(Sun, StandsToTheRightAndThirtyThreeDegreesHigh) {
  EXPECT_NEAR(length(towards_sun()), 1, 1e-12);
  EXPECT_NEAR(std::asin(-towards_sun().y) / kDegree, 33, 1e-9);
  EXPECT_NEAR(std::atan2(towards_sun().x, towards_sun().z) / kDegree, 52, 1e-9);
}

TEST(Sun, IsWarm) {
  EXPECT_GT(sunlight().x, sunlight().y);
  EXPECT_GT(sunlight().y, sunlight().z);
  EXPECT_GT(sunlight().z, 0);
}

// The disc has one colour; from its rim outwards nothing is as bright.
TEST(Sky, IsBrightestInTheSun) {
  const Vec3 disc = sky(towards_sun());
  EXPECT_EQ(disc.x, 4);
  for (int longitude = 0; longitude < 360; ++longitude) {
    for (int latitude = -90; latitude <= 0; ++latitude) {
      const Vec3 direction = direction_of(longitude * kDegree, latitude * kDegree);
      const double away = std::acos(std::min(1.0, dot(direction, towards_sun()))) / kDegree;
      const double seen = brightness(sky(direction));
      if (away < 1) {
        EXPECT_EQ(seen, brightness(disc)) << longitude << " " << latitude;
      }
      if (away > 1.7) {
        EXPECT_LT(seen, brightness(disc) / 2) << longitude << " " << latitude;
      }
    }
  }
}

TEST(Sky, IsFiniteLightInEveryDirection) {
  test::RandomSource random;
  const auto any = [&] { return double(random.real_between(-1, 1)); };
  std::vector<Vec3> directions = {{0, -1, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 0}, towards_sun(), -towards_sun()};
  directions.push_back({0, -1 - 1e-15, 0});  // a rounding error longer than 1
  for (int n = 0; n < 20000; ++n) directions.push_back(normalised({any(), any(), any()}));
  for (const Vec3 direction : directions) {
    const Vec3 seen = sky(direction);
    for (const double part : {seen.x, seen.y, seen.z}) ASSERT_TRUE(part >= 0 && part <= 4) << direction.x << " " << direction.y;
  }
}

// Hills are 2.2 to 15 degrees high, so below and above no direction is the other kind.
TEST(Sky, HasHillsAllAroundThatAreDarkerThanWhatIsOverThem) {
  for (int longitude = 0; longitude < 360; ++longitude) {
    const double low = brightness(sky(direction_of(longitude * kDegree, -2 * kDegree)));
    const double high = brightness(sky(direction_of(longitude * kDegree, -15.2 * kDegree)));
    EXPECT_LT(low, high) << longitude;
  }
}

TEST(Sky, LosesNothingAtTheWrapAround) {
  for (const double latitude : {-80.0, -40.0, -10.0, -3.0}) {
    const Vec3 before = sky(direction_of((180 - 1e-9) * kDegree, latitude * kDegree));
    const Vec3 after = sky(direction_of((180 + 1e-9) * kDegree, latitude * kDegree));
    EXPECT_NEAR(length(before - after), 0, 1e-6) << latitude;
  }
}

TEST(Skylight, IsBlueFromAboveAndWarmFromBelow) {
  const Vec3 above = skylight({0, -1, 0}), below = skylight({0, 1, 0});
  EXPECT_GT(above.z, above.x);
  EXPECT_GT(below.x, below.z);
  EXPECT_GT(brightness(above), brightness(below));
}

TEST(Skylight, DependsOnTheSlopeAloneAndEvenly) {
  const Vec3 above = skylight({0, -1, 0}), below = skylight({0, 1, 0});
  for (const double y : {-0.8, -0.25, 0.0, 0.6}) {
    const double level = std::sqrt(1 - y * y);
    const Vec3 wanted = below + (above - below) * ((1 - y) / 2);
    for (const Vec3 normal : {Vec3{level, y, 0}, Vec3{0, y, -level}}) {
      EXPECT_NEAR(length(skylight(normal) - wanted), 0, 1e-12) << y;
    }
  }
}

}  // namespace
}  // namespace biseam::scene
