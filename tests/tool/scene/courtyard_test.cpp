#include "scene/courtyard.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "scene/shape_tree.hpp"

namespace biseam::scene {
namespace {

const Courtyard& yard() {
  static const Courtyard only = build_courtyard();
  return only;
}

bool is_within(const Bounds& bounds, Vec3 p) {
  return bounds.low.x < p.x && p.x < bounds.high.x && bounds.low.y < p.y && p.y < bounds.high.y && bounds.low.z < p.z &&
         p.z < bounds.high.z;
}

bool is_sign(const Shape& shape) {
  return shape.finish.material == Material::board || shape.finish.material == Material::chart;
}

TEST(Courtyard, ShapesHaveAnExtentAndStandOnTheFloorOrOverIt) {
  for (const Shape& shape : yard().shapes) {
    const Bounds bounds = bounds_of(shape);
    EXPECT_LT(bounds.low.x, bounds.high.x);
    EXPECT_LT(bounds.low.y, bounds.high.y);
    EXPECT_LT(bounds.low.z, bounds.high.z);
    EXPECT_LE(bounds.high.y, kEyeHeight + 1e-9);
  }
}

// The tripod's place: nothing within a metre, so that every baseline keeps both pupils outside of everything.
TEST(Courtyard, TheCameraStandsFree) {
  for (const Shape& shape : yard().shapes) {
    Bounds wider = bounds_of(shape);
    wider.low = wider.low - Vec3{1, 1, 1};
    wider.high = wider.high + Vec3{1, 1, 1};
    EXPECT_FALSE(is_within(wider, {0, 0, 0}));
  }
}

TEST(Courtyard, WallsStandAllAround) {
  const ShapeTree tree(yard().shapes);
  for (int degree = 0; degree < 360; ++degree) {
    const double angle = degree * std::acos(-1.0) / 180;
    const Vec3 level{std::sin(angle), 0, std::cos(angle)};
    Hit hit;
    tree.meet(Beam({{0, 1, 0}, level}), hit);
    EXPECT_LT(hit.distance * std::max(std::abs(level.x), std::abs(level.z)), kHalfYard + 1e-9) << degree;
  }
}

// The seat of the bench is the highest of them.
TEST(Courtyard, FootprintsLieOnTheFloorOrLowOverIt) {
  EXPECT_FALSE(yard().footprints.empty());
  for (const Bounds& foot : yard().footprints) {
    EXPECT_LE(foot.high.y, kEyeHeight + 1e-9);
    EXPECT_GE(foot.high.y, y_of_height(0.4) - 1e-9);
  }
}

TEST(Courtyard, BoardsBelongToItAndTheirLinesFit) {
  std::size_t lettered = 0;
  for (const Shape& shape : yard().shapes) {
    const Board* board = shape.finish.board;
    ASSERT_EQ(board != nullptr, shape.finish.material == Material::board);
    if (!board) continue;
    ++lettered;
    EXPECT_TRUE(std::any_of(yard().boards.begin(), yard().boards.end(), [&](const auto& own) { return own.get() == board; }));
    const Vec3 extent = shape.b - shape.a;
    EXPECT_NEAR(std::max(extent.x, extent.z), board->width, 1e-9);
    EXPECT_NEAR(extent.y, board->height, 1e-9);
    const double rim = 0.31 * board->line_height;
    for (const tool::Lettering& line : board->lines) {
      EXPECT_GT(line.width(), 0);
      EXPECT_LT(line.width() * board->line_height + 2 * rim, board->width);
    }
    const double pitches = double(board->lines.size() - 1) * 1.7 + 1;
    EXPECT_LT(pitches * board->line_height + 2 * rim, board->height);
  }
  EXPECT_EQ(lettered, yard().boards.size());
  EXPECT_EQ(lettered, 5u);
}

// What is written on them is for looking at.
TEST(Courtyard, NothingStandsBetweenTheCameraAndASign) {
  const ShapeTree tree(yard().shapes);
  for (const Shape& sign : yard().shapes) {
    if (!is_sign(sign)) continue;
    const Vec3 middle = (sign.a + sign.b) * 0.5;
    Hit hit;
    tree.meet(Beam({{0, 0, 0}, normalised(middle)}), hit);
    ASSERT_NE(hit.shape, nullptr);
    EXPECT_EQ(hit.shape->finish.material, sign.finish.material) << middle.x << " " << middle.z;
    EXPECT_EQ(hit.shape->finish.board, sign.finish.board) << middle.x << " " << middle.z;
    EXPECT_NEAR(hit.distance, length(middle), 0.06) << middle.x << " " << middle.z;
  }
}

}  // namespace
}  // namespace biseam::scene
