#include "scene/camera.hpp"

#include <gtest/gtest.h>

#include <numbers>

#include "support/random_source.hpp"

namespace biseam::scene {
namespace {

using std::numbers::pi;

constexpr double kNear = 1e-9;
constexpr double kWide = 195 * pi / 180;

void expect_position(Position at, double u, double v) {
  EXPECT_NEAR(at.u, u, kNear);
  EXPECT_NEAR(at.v, v, kNear);
}

void expect_vector(Vec3 v, double x, double y, double z) {
  EXPECT_NEAR(v.x, x, kNear);
  EXPECT_NEAR(v.y, y, kNear);
  EXPECT_NEAR(v.z, z, kNear);
}

TEST(PanoramaView, LooksAheadAtItsEdgesAndRightBackAndLeftAtTheQuarters) {
  const PanoramaView view{360, 180};
  expect_vector(view.direction({-0.5, 89.5}), 0, 0, 1);
  expect_vector(view.direction({359.5, 89.5}), 0, 0, 1);
  expect_vector(view.direction({89.5, 89.5}), 1, 0, 0);
  expect_vector(view.direction({179.5, 89.5}), 0, 0, -1);
  expect_vector(view.direction({269.5, 89.5}), -1, 0, 0);
}

TEST(PanoramaView, HasThePolesAtItsUpperAndLowerEdge) {
  const PanoramaView view{360, 180};
  expect_vector(view.direction({17, 179.5}), 0, 1, 0);
  expect_vector(view.direction({17, -0.5}), 0, -1, 0);
}

TEST(PanoramaView, ProjectsWhereTheDirectionCameFrom) {
  const PanoramaView view{1920, 960};
  for (const Position at : {Position{0, 0}, {479, 479}, {959.25, 100.5}, {1918.5, 958}}) {
    expect_position(view.project(view.direction(at)), at.u, at.v);
  }
}

TEST(Fisheye, ImagesItsAxisInTheMiddle) {
  expect_position(Fisheye::fitting(0, 1080, kWide).project({0, 0, 1}), 539.5, 539.5);
  expect_position(Fisheye::fitting(1, 1080, kWide).project({0, 0, -1}), 539.5, 539.5);
}

TEST(Fisheye, CircleJustFitsThePicture) {
  const Fisheye lens = Fisheye::fitting(0, 1080, kWide);
  EXPECT_NEAR(lens.lens().p * kWide / 2, 540, kNear);
  EXPECT_TRUE(lens.sees({0, 539.5}));
  EXPECT_FALSE(lens.sees({0, 0}));
}

TEST(Fisheye, ShowsTheWorldsRightOnTheRightOfLens0AndOnTheLeftOfLens1) {
  const Fisheye lens0 = Fisheye::fitting(0, 1080, kWide), lens1 = Fisheye::fitting(1, 1080, kWide);
  const double quarter = lens0.lens().p * pi / 2;
  expect_position(lens0.project({1, 0, 0}), 539.5 + quarter, 539.5);
  expect_position(lens1.project({1, 0, 0}), 539.5 - quarter, 539.5);
}

TEST(Fisheye, ShowsDownwardsDownInBothLenses) {
  for (const int index : {0, 1}) {
    const Fisheye lens = Fisheye::fitting(index, 1080, kWide);
    expect_position(lens.project({0, 1, 0}), 539.5, 539.5 + lens.lens().p * pi / 2);
  }
}

TEST(Fisheye, IsEquidistantInEveryDirection) {
  test::RandomSource random;
  for (int n = 0; n < 1000; ++n) {
    const double from_axis = random.real_between(-3.1F, 3.1F), t = random.real_between(-1.5F, 1.5F);
    for (const int index : {0, 1}) {
      const Fisheye lens = Fisheye::fitting(index, 777, kWide);
      const double x = std::sin(from_axis) * std::cos(t), y = std::sin(t), z = std::cos(from_axis) * std::cos(t);
      const double alpha = std::acos(z), r = std::sqrt(x * x + y * y);
      if (alpha > kWide / 2) continue;
      const Position at = lens.project(direction_of(from_axis + index * pi, t));
      EXPECT_NEAR(at.u, 388 + lens.lens().p * alpha * x / r, 1e-5);
      EXPECT_NEAR(at.v, 388 + lens.lens().p * alpha * y / r, 1e-5);
    }
  }
}

TEST(Fisheye, DirectionUndoesProject) {
  for (const int index : {0, 1}) {
    const Fisheye lens = Fisheye::fitting(index, 1080, kWide);
    for (const Position at : {Position{539.5, 539.5}, {3, 540}, {700.25, 60.5}, {540, 1079}}) {
      expect_position(lens.project(lens.direction(at)), at.u, at.v);
      EXPECT_NEAR(length(lens.direction(at)), 1, kNear);
    }
  }
}

TEST(Fisheye, PupilsLieHalfTheBaselineInFrontOfTheMiddle) {
  expect_vector(Fisheye::fitting(0, 100, kWide).pupil(0.06), 0, 0, 0.03);
  expect_vector(Fisheye::fitting(1, 100, kWide).pupil(0.06), 0, 0, -0.03);
}

TEST(Fisheye, ParallaxMovesWhatStandsAsideAwayFromBothAxes) {
  const Vec3 aside{2, 0, 0};
  for (const int index : {0, 1}) {
    const Fisheye lens = Fisheye::fitting(index, 1080, kWide);
    const Position seen = lens.project(normalised(aside - lens.pupil(0.06)));
    const double angle = pi / 2 + std::atan(0.03 / 2);
    EXPECT_NEAR(std::abs(seen.u - 539.5), lens.lens().p * angle, kNear);
  }
}

}  // namespace
}  // namespace biseam::scene
