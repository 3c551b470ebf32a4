#include "scene/shape_tree.hpp"

#include <gtest/gtest.h>

#include "scene/courtyard.hpp"
#include "support/random_source.hpp"

namespace biseam::scene {
namespace {

TEST(ShapeTree, MeetsWhatTryingEveryShapeMeets) {
  const Courtyard yard = build_courtyard();
  const ShapeTree tree(yard.shapes);
  test::RandomSource random;
  const auto any = [&] { return double(random.real_between(-1, 1)); };
  for (int n = 0; n < 3000; ++n) {
    const Vec3 direction = normalised({any(), any(), any() + 1e-3});
    const Beam beam(Ray{{any(), 0.5 * any(), any()}, direction});
    Hit expected, hit;
    for (const Shape& shape : yard.shapes) meet(shape, beam, 1e-4, expected);
    tree.meet(beam, hit);
    ASSERT_EQ(hit.distance, expected.distance);
    ASSERT_EQ(tree.blocks(beam), expected.shape != nullptr);
  }
}

// Whatever a ray can meet, found without the tree.
void expect_as_one_by_one(const std::vector<Shape>& shapes, test::RandomSource& random) {
  const ShapeTree tree(shapes);
  const auto any = [&](float reach) { return double(random.real_between(-reach, reach)); };
  for (int n = 0; n < 400; ++n) {
    Vec3 direction{any(1), any(1), any(1)};
    if (n % 4 == 1) direction.x = 0;
    if (n % 4 == 2) direction = {0, n % 8 == 2 ? 1.0 : -1.0, 0};
    const Beam beam(Ray{{any(6), any(6), any(6)}, normalised(direction)});
    Hit expected, hit;
    for (const Shape& shape : shapes) meet(shape, beam, 1e-4, expected);
    tree.meet(beam, hit);
    ASSERT_EQ(hit.distance, expected.distance);
    ASSERT_EQ(hit.shape != nullptr, expected.shape != nullptr);
    if (hit.shape) {
      ASSERT_EQ(hit.shape->finish.tint.x, expected.shape->finish.tint.x) << "another shape";
    }
    ASSERT_EQ(tree.blocks(beam), expected.shape != nullptr);

    Hit nearer;
    nearer.distance = expected.distance * 0.999;
    tree.meet(beam, nearer);
    ASSERT_EQ(nearer.shape, nullptr) << "what lies behind a hit is none";
  }
}

std::vector<Shape> random_shapes(int count, test::RandomSource& random) {
  const auto any = [&] { return double(random.real_between(-4, 4)); };
  const auto size = [&] { return double(random.real_between(0.05F, 1.5F)); };
  std::vector<Shape> shapes;
  for (int n = 0; n < count; ++n) {
    const Vec3 at{any(), any(), any()};
    const Solid solid = Solid(random.between(0, 3));
    const Vec3 other = solid == Solid::ellipsoid  ? Vec3{size(), size(), size()}
                       : solid == Solid::cylinder ? Vec3{size(), at.y + size(), size()}
                                                  : at + Vec3{size(), size(), size()};
    shapes.push_back({solid, at, other, {Material::stone, {double(n), 0, 0}}});
  }
  return shapes;
}

TEST(ShapeTree, OfAnyNumberOfShapesIsWhatTryingEachIs) {
  test::RandomSource random;
  for (const int count : {0, 1, 2, 3, 4, 5, 17, 100}) {
    SCOPED_TRACE(count);
    expect_as_one_by_one(random_shapes(count, random), random);
  }
}

TEST(ShapeTree, MayHoldTheSameShapeManyTimes) {
  test::RandomSource random;
  expect_as_one_by_one(std::vector<Shape>(70, {Solid::box, {-1, -1, -1}, {1, 1, 1}, {Material::stone, {5, 0, 0}}}), random);
}

}  // namespace
}  // namespace biseam::scene
