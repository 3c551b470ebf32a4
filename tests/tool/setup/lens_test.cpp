#include "setup/lens.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "tool/support/expect_failure.hpp"

namespace biseam::tool {
namespace {

TEST(SettledLens, WithoutValuesIsTheCentredCircleThatFits) {
  const BiseamLens lens = settle_lens({}, {1200, 960}, 0);
  EXPECT_EQ(lens.width, 1200);
  EXPECT_EQ(lens.height, 960);
  EXPECT_EQ(lens.cx, 599.5);
  EXPECT_EQ(lens.cy, 479.5);
  EXPECT_EQ(lens.fov, 195);
  EXPECT_DOUBLE_EQ(lens.p, 480 / (97.5 / 180 * std::numbers::pi));
}

TEST(SettledLens, ACircleOffTheMiddleReachesTheNearestEdge) {
  profile::LensSettings settings;
  settings.cx = 399.5;
  settings.fov = 180;
  EXPECT_DOUBLE_EQ(settle_lens(settings, {960, 960}, 0).p, 400 / (std::numbers::pi / 2));
}

TEST(SettledLens, ACircleFitsWhateverTheRadiusDoes) {
  profile::LensSettings settings;
  settings.k = {0.02, -0.01, 0.001};
  const BiseamLens lens = settle_lens(settings, {960, 960}, 0);
  const double a = 97.5 / 180 * std::numbers::pi;
  EXPECT_NEAR(lens.p * (a + 0.02 * std::pow(a, 3) - 0.01 * std::pow(a, 5) + 0.001 * std::pow(a, 7)), 480, 1e-9);
}

TEST(SettledLens, TakesWhatIsGiven) {
  profile::LensSettings settings;
  settings.cx = 10;
  settings.cy = 30;
  settings.p = 100;
  settings.k = {0.1, 0.2, 0.3};
  settings.fov = 200;
  settings.vignette = {-0.01, 0.02};
  settings.gain = {1.1, 1, 0.9};
  settings.mount = 90;
  settings.yaw = 1;
  settings.pitch = -2;
  settings.roll = 3;
  for (const int index : {0, 1}) {
    const BiseamLens lens = settle_lens(settings, {960, 640}, index);
    EXPECT_EQ(lens.cx, 10);
    EXPECT_EQ(lens.cy, 30);
    EXPECT_EQ(lens.p, 100);
    EXPECT_EQ(lens.k[0], 0.1);
    EXPECT_EQ(lens.k[1], 0.2);
    EXPECT_EQ(lens.k[2], 0.3);
    EXPECT_EQ(lens.fov, 200);
    EXPECT_EQ(lens.vignette[0], -0.01);
    EXPECT_EQ(lens.vignette[1], 0.02);
    EXPECT_EQ(lens.gain[0], 1.1);
    EXPECT_EQ(lens.gain[1], 1);
    EXPECT_EQ(lens.gain[2], 0.9);
    EXPECT_EQ(lens.mount, 90);
    EXPECT_EQ(lens.turn.yaw, 1);
    EXPECT_EQ(lens.turn.pitch, -2);
    EXPECT_EQ(lens.turn.roll, 3);
  }
}

TEST(SettledLens, ACentreOutsideThePictureNeedsAScale) {
  profile::LensSettings settings;
  settings.cx = -20;
  EXPECT_EQ(test::failure_of([&] { settle_lens(settings, {960, 960}, 1); }).first, ExitCode::settings);
  settings.p = 200;
  EXPECT_EQ(settle_lens(settings, {960, 960}, 1).p, 200);
}

}  // namespace
}  // namespace biseam::tool
