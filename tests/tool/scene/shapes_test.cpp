#include "scene/shapes.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "support/random_source.hpp"

namespace biseam::scene {
namespace {

constexpr double kNear = 1e-9;

// Below 0 inside a solid, 0 on its surface, which for a cylinder is its mantle.
double beyond(const Shape& shape, Vec3 p) {
  const Vec3 a = shape.a, b = shape.b;
  if (shape.solid == Solid::ellipsoid) return length((p - a) * Vec3{1 / b.x, 1 / b.y, 1 / b.z}) - 1;
  if (shape.solid == Solid::cylinder) {
    return std::hypot(p.x - a.x, p.z - a.z) - mix(b.x, b.z, (p.y - a.y) / (b.y - a.y));
  }
  const double box = std::max({a.x - p.x, p.x - b.x, a.y - p.y, p.y - b.y, a.z - p.z, p.z - b.z});
  if (shape.solid == Solid::box) return box;
  const double middle = (a.z + b.z) / 2, half = (b.z - a.z) / 2;
  return std::max(box, std::abs(p.z - middle) - half * (p.y - a.y) / (b.y - a.y));
}

bool is_between_ends(const Shape& shape, Vec3 p) {
  return shape.solid != Solid::cylinder || (p.y >= shape.a.y && p.y <= shape.b.y);
}

// Along the ray step by step: where it has come in between two of them, at the latest.
double entry_by_steps(const Shape& shape, const Ray& ray) {
  constexpr double kStep = 0.01;
  for (double at = 0; at < 14; at += kStep) {
    const Vec3 before = ray.origin + ray.direction * at, after = ray.origin + ray.direction * (at + kStep);
    if (!is_between_ends(shape, before) || !is_between_ends(shape, after)) continue;
    if (beyond(shape, before) > 0 && beyond(shape, after) < 0) return at + kStep;
  }
  return 1e30;
}

Vec3 outwards(const Shape& shape, Vec3 p) {
  constexpr double kStep = 1e-6;
  const auto slope = [&](Vec3 step) { return beyond(shape, p + step) - beyond(shape, p - step); };
  return normalised({slope({kStep, 0, 0}), slope({0, kStep, 0}), slope({0, 0, kStep})});
}

const std::vector<Shape>& solids() {
  static const std::vector<Shape> all = {
      {Solid::box, {-1, -0.5, -0.75}, {1.25, 1, 0.5}, {Material::stone}},
      {Solid::roof, {-1, -0.5, -0.75}, {1.25, 1, 1.5}, {Material::stone}},
      {Solid::ellipsoid, {0.25, 0, -0.5}, {1, 0.5, 1.5}, {Material::stone}},
      {Solid::cylinder, {0.25, -1, -0.5}, {0.75, 1, 0.75}, {Material::stone}},
      {Solid::cylinder, {0.25, -1, -0.5}, {0.25, 1, 1.5}, {Material::stone}},
      {Solid::cylinder, {0.25, -0.25, -0.5}, {1.5, 0.25, 0.5}, {Material::stone}},  // wide at the top, flatter than most rays
  };
  return all;
}

// From about five metres away towards some place near the middle.
Ray ray_from_outside(test::RandomSource& random, int n) {
  const auto any = [&](float reach) { return double(random.real_between(-reach, reach)); };
  const Vec3 origin = 5 * normalised({any(1), any(1), any(1)});
  Vec3 direction = Vec3{any(1.5F), any(1.5F), any(1.5F)} - origin;
  if (n % 8 == 1) direction.x = 0;
  if (n % 8 == 2) direction.y = 0;
  if (n % 8 == 3) direction.z = 0;
  if (n % 8 == 4) direction = {0, -origin.y, 0};
  return {origin, normalised(direction)};
}

TEST(ShapesAgainstReference, AreMetWhereTheRayComesIn) {
  test::RandomSource random;
  for (std::size_t which = 0; which < solids().size(); ++which) {
    SCOPED_TRACE(which);
    const Shape& shape = solids()[which];
    const bool is_round = shape.solid == Solid::ellipsoid || shape.solid == Solid::cylinder;
    int met = 0;
    for (int n = 0; n < 2000; ++n) {
      const Ray ray = ray_from_outside(random, n);
      Hit hit;
      const bool is_met = meet(shape, Beam(ray), 1e-4, hit);
      ASSERT_LE(hit.distance, entry_by_steps(shape, ray)) << n;
      ASSERT_EQ(hit.shape, is_met ? &shape : nullptr);
      if (!is_met) continue;
      ++met;
      const Vec3 at = ray.origin + ray.direction * hit.distance;
      ASSERT_NEAR(beyond(shape, at), 0, kNear) << n;
      ASSERT_TRUE(is_between_ends(shape, at)) << n;
      ASSERT_LE(dot(hit.normal, ray.direction), 1e-6) << n;
      ASSERT_NEAR(length(hit.normal), 1, kNear) << n;
      ASSERT_GT(beyond(shape, at + hit.normal * 1e-4), 2e-5) << n;
      if (is_round) {
        ASSERT_LT(length(outwards(shape, at) - hit.normal), 1e-5) << n;
      }
    }
    EXPECT_GT(met, 60);
  }
}

// A ray steeper than the mantle of a cone comes in through it just as a flat one does.
TEST(Shapes, ASteepRayMeetsAFlatConeFromOutside) {
  const Shape funnel{Solid::cylinder, {0, -0.25, 0}, {1.5, 0.25, 0.5}, {Material::stone}};  // 2 metres wider, half a metre high
  for (const double x : {-1.4, -1.0, 0.6, 1.2}) {
    Hit hit;
    ASSERT_TRUE(meet(funnel, Beam({{x, 3, 0}, {0, -1, 0}}), 1e-4, hit)) << x;
    EXPECT_NEAR(3 - hit.distance, 0.25 - (std::abs(x) - 0.5) / 2, kNear) << x;
    EXPECT_NEAR(hit.normal.y, 2 / std::sqrt(5), kNear);
  }
  for (const double turn : {0.0, 1e-16, -1e-16, 1e-9, -1e-9}) {  // as steep as the mantle on the other side
    const Vec3 along = normalised({-1, -0.5 + turn, 0});
    Hit hit;
    ASSERT_TRUE(meet(funnel, Beam({Vec3{1, 0, 0} - along * 2, along}), 1e-4, hit)) << turn;
    EXPECT_NEAR(hit.distance, 2, kNear) << turn;
  }
}

TEST(Shapes, ARoofIsMetByRaysAlongItsSlope) {
  const Shape roof{Solid::roof, {-2, -1, -1}, {2, 0, 1}, {Material::stone}};  // both slopes are 45 degrees
  const double half = std::sqrt(0.5);
  for (const double turn : {0.0, 1e-17, -1e-17, 1e-13, -1e-13}) {
    const Ray inside{{0, -0.4, 3}, {0, turn, -1}}, along{{0, 0.5, 1.25}, {0, -half + turn, -half}};
    Hit hit;
    EXPECT_TRUE(meet(roof, Beam(inside), 1e-4, hit));
    EXPECT_NEAR(hit.distance, 3 - 0.6, 1e-6);
    hit = {};
    EXPECT_TRUE(meet(roof, Beam(along), 1e-4, hit)) << turn;
    EXPECT_NEAR(hit.distance, 0.5 / half, 1e-6) << turn;
  }
}

TEST(Shapes, BoxesAndRoofsAreMetFromWithinToo) {
  for (const Solid solid : {Solid::box, Solid::roof}) {
    const Shape shape{solid, {-1, -2, -1}, {3, 2, 1}, {Material::stone}};
    Hit hit;
    ASSERT_TRUE(meet(shape, Beam({{0, 1, 0}, {1, 0, 0}}), 1e-4, hit));
    EXPECT_NEAR(hit.distance, 3, kNear);
    EXPECT_NEAR(hit.normal.x, -1, kNear);
  }
}

TEST(Shapes, EllipsoidsAndMantlesAreNotMetFromWithin) {
  test::RandomSource random;
  for (std::size_t which = 2; which < solids().size(); ++which) {
    const Shape& shape = solids()[which];
    const Vec3 middle = which == 2 ? shape.a : Vec3{shape.a.x, (shape.a.y + shape.b.y) / 2, shape.a.z};
    for (int n = 0; n < 200; ++n) {
      const auto any = [&] { return double(random.real_between(-1, 1)); };
      Hit hit;
      const Vec3 direction = normalised({any(), 0.2 * any(), any()});
      EXPECT_FALSE(meet(shape, Beam({middle, direction}), 1e-4, hit)) << which << " " << n;
    }
  }
}

TEST(Shapes, NearerHitsAndTooNearOnesStand) {
  for (const Shape& shape : solids()) {
    const Ray ray{{0.25, 0, -6}, {0, 0, 1}};
    Hit first;
    ASSERT_TRUE(meet(shape, Beam(ray), 1e-4, first));
    Hit nearer;
    nearer.distance = first.distance - 0.001;
    EXPECT_FALSE(meet(shape, Beam(ray), 1e-4, nearer));
    EXPECT_EQ(nearer.shape, nullptr);
    Hit again = first;
    EXPECT_FALSE(meet(shape, Beam(ray), 1e-4, again)) << "as near is not nearer";
    Hit later;
    if (meet(shape, Beam(ray), first.distance + 0.001, later)) {
      EXPECT_GT(later.distance, first.distance + 0.001);
    }
    Hit behind;
    EXPECT_FALSE(meet(shape, Beam({{0.25, 0, 6}, {0, 0, 1}}), 1e-4, behind)) << "rays have a direction";
  }
}

TEST(Bounds, HoldTheShapeAndTouchIt) {
  const Bounds box = bounds_of(solids()[0]), roof = bounds_of(solids()[1]), egg = bounds_of(solids()[2]);
  const Bounds cone = bounds_of(solids()[4]), funnel = bounds_of(solids()[5]);
  const auto expect = [](const Bounds& bounds, Vec3 low, Vec3 high) {
    EXPECT_NEAR(length(bounds.low - low), 0, kNear);
    EXPECT_NEAR(length(bounds.high - high), 0, kNear);
  };
  expect(box, {-1, -0.5, -0.75}, {1.25, 1, 0.5});
  expect(roof, {-1, -0.5, -0.75}, {1.25, 1, 1.5});
  expect(egg, {-0.75, -0.5, -2}, {1.25, 0.5, 1});
  expect(cone, {-1.25, -1, -2}, {1.75, 1, 1});
  expect(funnel, {-1.25, -0.25, -2}, {1.75, 0.25, 1});
  Bounds both = box;
  both.take_in(egg);
  expect(both, {-1, -0.5, -2}, {1.25, 1, 1});
  Bounds none;
  none.take_in(egg);
  expect(none, egg.low, egg.high);
}

TEST(Shapes, LieInTheSphereAroundThem) {
  test::RandomSource random;
  const auto any = [&] { return double(random.real_between(-2, 2)); };
  for (const Shape& shape : solids()) {
    const Sphere around = sphere_around(shape);
    double farthest = 0;
    for (int n = 0; n < 20000; ++n) {
      const Vec3 at{any(), any(), any()};
      if (is_between_ends(shape, at) && beyond(shape, at) < 0) farthest = std::max(farthest, length(at - around.centre));
    }
    EXPECT_LE(farthest, around.radius);
    EXPECT_GT(farthest, around.radius * 0.5);
  }
}

}  // namespace
}  // namespace biseam::scene
