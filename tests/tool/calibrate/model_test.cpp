#include "calibrate/model.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "tool/calibrate/matches.hpp"

namespace biseam::calibrate {
namespace {

TEST(Model, WhatLensesShareAndWhatMakesThemDifferent) {
  const Values values = some_values();
  const Frame frame{960, 840, {90, 270}};
  const Camera camera = camera_of(values, frame);
  const Lens &first = camera.lens[0], &second = camera.lens[1];
  EXPECT_NEAR(std::sqrt(first.p * second.p), 275, 1e-9);
  EXPECT_NEAR(second.p / first.p, std::exp(0.01), 1e-12);
  EXPECT_NEAR((first.k[0] + second.k[0]) / 2, values[kK1], 1e-15);
  EXPECT_NEAR(second.k[0] - first.k[0], values[kK1Apart], 1e-15);
  EXPECT_EQ(first.k[2], values[kK3]);
  EXPECT_EQ(second.k[2], values[kK3]);
  Values apart = values;
  apart[kK2Apart] = 0.0006;
  const Camera other = camera_of(apart, frame);
  EXPECT_NEAR((other.lens[0].k[1] + other.lens[1].k[1]) / 2, values[kK2], 1e-15);
  EXPECT_NEAR(other.lens[1].k[1] - other.lens[0].k[1], 0.0006, 1e-15);
}

TEST(Model, EachLensHasItsCentreAndMountAndTheSecondTheTurn) {
  const Camera camera = camera_of(some_values(), {960, 840, {90, 270}});
  const Lens &first = camera.lens[0], &second = camera.lens[1];
  EXPECT_EQ(first.cx, 478);
  EXPECT_EQ(first.cy, 481);
  EXPECT_EQ(second.cx, 483);
  EXPECT_EQ(second.cy, 476);
  EXPECT_EQ(first.mount, 90);
  EXPECT_EQ(second.mount, 270);
  for (const Lens& lens : camera.lens) {
    EXPECT_EQ(lens.width, 960);
    EXPECT_EQ(lens.height, 840);
    EXPECT_NEAR(lens.fov, 2 * 99, 1e-9);
  }
  EXPECT_EQ(first.turn.yaw, 0);
  EXPECT_EQ(first.turn.pitch, 0);
  EXPECT_EQ(first.turn.roll, 0);
  EXPECT_EQ(second.turn.yaw, 1.5);
  EXPECT_EQ(second.turn.pitch, -2);
  EXPECT_EQ(second.turn.roll, 0.7);
}

// p (a + k1 a^3) has its largest value where 3 k1 a^2 = -1.
TEST(Model, CirclesEndBeforeTheRadiusDecreases) {
  Values values = some_values();
  values[kK1Apart] = values[kK2] = values[kK3] = 0;
  for (const double k1 : {-0.12, -0.2, -0.3}) {
    values[kK1] = k1;
    const double largest = 2 * std::sqrt(-1 / (3 * k1)) / kDegree;
    ASSERT_LT(largest, 2 * values[kRim]);
    for (const Lens& lens : camera_of(values, kFrame).lens) {
      EXPECT_LE(lens.fov, largest);
      EXPECT_GE(lens.fov, 0.99 * largest);
    }
  }
}

// By how far the ring moves in a panorama of 3840, at most.
double moved(const Values& values, const Values& other) {
  const Camera before = camera_of(values, kFrame), after = camera_of(other, kFrame);
  double most = 0;
  for (int k = 0; k < 2; ++k) {
    const Projector from(before, k), to(after, k);
    for (int i = 0; i < 16; ++i) {
      const Vec3 d = ring_direction(i * kPi / 8, 0);
      const ImagePoint at = from.project(d);
      const Vec3 e = to.unproject(at.x, at.y);
      most = std::max(most, std::hypot(d.x - e.x, std::hypot(d.y - e.y, d.z - e.z)) * 3840 / (2 * kPi));
    }
  }
  return most;
}

TEST(Model, StepsAreAboutAPixel) {
  const Values values = some_values();
  for (std::size_t p = 0; p < kRim; ++p) {
    Values other = values;
    other[p] += kSteps[p];
    EXPECT_GT(moved(values, other), 0.4) << "parameter " << p;
    EXPECT_LT(moved(values, other), 8) << "parameter " << p;
  }
}

}  // namespace
}  // namespace biseam::calibrate
