#include "scene/place.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "scene/light.hpp"
#include "support/random_source.hpp"

namespace biseam::scene {
namespace {

const Place& place() {
  static const Place only;
  return only;
}

constexpr double kFine = 1e-4;  // radians

double brightness(Vec3 light) { return light.x + light.y + light.z; }

TEST(Place, IsMeasuredInMetres) {
  EXPECT_NEAR(place().distance_along({{0, -1.06, 0.9}, {1, 0, 0}}), 5.13, 1e-9) << "to the coping over the wall";
  EXPECT_EQ(place().distance_along({{0, 0, 0}, {0, -1, 0}}), 1e30);
  EXPECT_NEAR(place().distance_along({{0, 0, 0}, {0, 1, 0}}), 1.5, 1e-9);
}

TEST(Place, ShowsTheSkyWhereNothingIsInTheWay) {
  const Vec3 up = normalised({0.1, -1, 0.2}), expected = sky(up), seen = place().look({{0, 0, 0}, up}, kFine).light;
  EXPECT_EQ(seen.x, expected.x);
  EXPECT_EQ(seen.y, expected.y);
  EXPECT_EQ(seen.z, expected.z);
}

TEST(Place, SeesWhatARayMeetsAsFarAwayAsItIsAndInFiniteLight) {
  test::RandomSource random;
  const auto any = [&] { return double(random.real_between(-1, 1)); };
  for (int n = 0; n < 3000; ++n) {
    const Ray ray{{0.2 * any(), 0.2 * any(), 0.2 * any()}, normalised({any(), any(), any()})};
    const Sight sight = place().look(ray, kFine);
    ASSERT_EQ(sight.distance, place().distance_along(ray));
    for (const double part : {sight.light.x, sight.light.y, sight.light.z}) ASSERT_TRUE(part >= 0 && part < 20) << part;
  }
}

TEST(Place, BallsAreMetWhereTheyAreAtThatTime) {
  Place moving;
  for (const double seconds : {0.0, 0.4, 1.3, 7.7}) {
    moving.go_to(seconds);
    for (const Shape& ball : moving.moving()) {
      const Ray ray{{0, 0, 0}, normalised(ball.a)};
      EXPECT_NEAR(moving.distance_along(ray), length(ball.a) - ball.b.x, 1e-9) << seconds;
    }
  }
}

// Where its centre's shadow falls the sun is gone; once the ball is elsewhere it is back.
TEST(Place, BallsCastShadowsOnTheFloor) {
  Place moving, later;
  int shaded = 0;
  for (int step = 0; step < 40; ++step) {
    const double seconds = 0.1 * step;
    moving.go_to(seconds);
    later.go_to(seconds + 2);
    for (const Shape& ball : moving.moving()) {
      const Vec3 sun = towards_sun(), spot = ball.a - sun * ((ball.a.y - kEyeHeight) / sun.y);
      const Ray ray{{0, 0, 0}, normalised(spot)};
      const auto sees_floor = [&](const Place& at) { return std::abs(at.distance_along(ray) - length(spot)) < 1e-6; };
      if (!sees_floor(moving) || !sees_floor(later)) continue;
      const double now = brightness(moving.look(ray, kFine).light), then = brightness(later.look(ray, kFine).light);
      EXPECT_LE(now, then * (1 + 1e-12)) << seconds;
      shaded += now < 0.7 * then;
    }
  }
  EXPECT_GT(shaded, 10);
}

// Polished steel stands on its pedestal behind the camera; what it shows is the light of the ray that it throws back.
TEST(Place, SteelMirrorsWhatItFaces) {
  const Vec3 centre{-1.5, y_of_height(kPedestalHeight + 0.34), -1.95};
  const Ray ray{{0, 0, 0}, normalised(centre + Vec3{0, -0.2, 0})};
  const Sight ball = place().look(ray, kFine);
  ASSERT_TRUE(ball.is_mirrored);
  const Vec3 at = ray.direction * ball.distance, normal = normalised(at - centre);
  EXPECT_NEAR(length(at - centre), 0.34, 1e-9);
  const Vec3 back = ray.direction - normal * (2 * dot(ray.direction, normal));
  const Sight mirrored = place().look({at + normal * 1e-4, back}, 3 * kFine);
  EXPECT_EQ(mirrored.distance, 1e30) << "this ray was chosen to go to the sky";
  for (double Vec3::*part : {&Vec3::x, &Vec3::y, &Vec3::z}) {
    const double own = ball.light.*part - 0.85 * (mirrored.light.*part);
    EXPECT_TRUE(own >= 0 && own < 0.2) << "steel itself is nearly black: " << own;
  }
  EXPECT_FALSE(place().look({{0, 0, 0}, {0, 1, 0}}, kFine).is_mirrored);
}

// Corners keep light out: the same slab of floor is darker at the foot of a wall than away from it, on the shaded side.
TEST(Place, LittleLightGetsIntoCorners) {
  const auto floor_at = [&](double x, double z) {
    double sum = 0;
    for (int n = 0; n < 40; ++n) {  // over many slabs, as their colours differ
      const Vec3 spot{x, kEyeHeight, z - 0.6 + 0.03 * n};
      sum += brightness(place().look({spot - Vec3{0, 0.01, 0}, {0, 1, 0}}, 0.5).light);
    }
    return sum;
  };
  EXPECT_LT(floor_at(kHalfYard - 0.02, -2), 0.8 * floor_at(kHalfYard - 1.22, -2));
}

}  // namespace
}  // namespace biseam::scene
