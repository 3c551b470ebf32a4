#include "camera/lens.hpp"

#include <gtest/gtest.h>

#include <numbers>

#include "tool/support/expect_failure.hpp"

namespace biseam::tool {
namespace {

TEST(Lens, WithoutValuesItIsTheCentredCircleThatFits) {
  const Lens lens = settle_lens({}, {1200, 960}, 0);
  EXPECT_EQ(lens.centre.x, 599.5);
  EXPECT_EQ(lens.centre.y, 479.5);
  EXPECT_DOUBLE_EQ(lens.p, 480 / (97.5 / 180 * std::numbers::pi));
  EXPECT_DOUBLE_EQ(lens.reach, 97.5);
}

TEST(Lens, ACircleOffTheMiddleReachesTheNearestEdge) {
  profile::LensSettings settings;
  settings.cx = 399.5;
  settings.fov = 180;
  EXPECT_DOUBLE_EQ(settle_lens(settings, {960, 960}, 0).p, 400 / (std::numbers::pi / 2));
}

TEST(Lens, TheReachEndsAtTheCircleOrAtTheNearerSide) {
  profile::LensSettings settings;
  settings.p = 100;
  settings.fov = 200;
  EXPECT_DOUBLE_EQ(settle_lens(settings, {960, 960}, 0).reach, 100);
  settings.cx = 160;
  EXPECT_DOUBLE_EQ(settle_lens(settings, {960, 960}, 0).reach, 160.5 / 100 * 180 / std::numbers::pi);
  settings.yaw = -2;
  EXPECT_DOUBLE_EQ(settle_lens(settings, {960, 960}, 1).reach, 160.5 / 100 * 180 / std::numbers::pi - 2);
}

TEST(Lens, TheCentreIsGivenAsRecordedAndTurnedWithTheMounting) {
  profile::LensSettings settings;
  settings.p = 100;
  settings.cx = 10;
  settings.cy = 30;
  settings.mount = 90;
  const Lens lens = settle_lens(settings, {960, 640}, 0);
  EXPECT_EQ(lens.centre.x, 30);
  EXPECT_EQ(lens.centre.y, 949);
}

TEST(Lens, ACentreOutsideThePictureNeedsAScale) {
  profile::LensSettings settings;
  settings.cx = -20;
  EXPECT_EQ(test::failure_of([&] { settle_lens(settings, {960, 960}, 1); }).first, ExitCode::settings);
  settings.p = 200;
  EXPECT_EQ(settle_lens(settings, {960, 960}, 1).p, 200);
}

}  // namespace
}  // namespace biseam::tool
