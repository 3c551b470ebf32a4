#include "camera/lens.hpp"

#include <gtest/gtest.h>

#include <numbers>

#include "tool/support/expect_failure.hpp"

namespace biseam::tool {
namespace {

TEST(Lens, without_values_it_is_the_centred_circle_that_fits) {
  const Lens lens = settle_lens({}, {1200, 960}, 0);
  EXPECT_EQ(lens.centre.x, 599.5);
  EXPECT_EQ(lens.centre.y, 479.5);
  EXPECT_DOUBLE_EQ(lens.p, 480 / (97.5 / 180 * std::numbers::pi));
  EXPECT_DOUBLE_EQ(lens.reach, 97.5);
}

TEST(Lens, a_circle_off_the_middle_reaches_the_nearest_edge) {
  profile::LensSettings settings;
  settings.cx = 399.5;
  settings.fov = 180;
  EXPECT_DOUBLE_EQ(settle_lens(settings, {960, 960}, 0).p, 400 / (std::numbers::pi / 2));
}

TEST(Lens, the_reach_ends_at_the_circle_or_at_the_nearer_side) {
  profile::LensSettings settings;
  settings.p = 100;
  settings.fov = 200;
  EXPECT_DOUBLE_EQ(settle_lens(settings, {960, 960}, 0).reach, 100);
  settings.cx = 160;
  EXPECT_DOUBLE_EQ(settle_lens(settings, {960, 960}, 0).reach, 160.5 / 100 * 180 / std::numbers::pi);
  settings.yaw = -2;
  EXPECT_DOUBLE_EQ(settle_lens(settings, {960, 960}, 1).reach, 160.5 / 100 * 180 / std::numbers::pi - 2);
}

TEST(Lens, the_centre_is_given_as_recorded_and_turned_with_the_mounting) {
  profile::LensSettings settings;
  settings.p = 100;
  settings.cx = 10;
  settings.cy = 30;
  settings.mount = 90;
  const Lens lens = settle_lens(settings, {960, 640}, 0);
  EXPECT_EQ(lens.centre.x, 30);
  EXPECT_EQ(lens.centre.y, 949);
}

TEST(Lens, a_centre_outside_the_picture_needs_a_scale) {
  profile::LensSettings settings;
  settings.cx = -20;
  EXPECT_EQ(test::failure_of([&] { settle_lens(settings, {960, 960}, 1); }).first, ExitCode::settings);
  settings.p = 200;
  EXPECT_EQ(settle_lens(settings, {960, 960}, 1).p, 200);
}

}  // namespace
}  // namespace biseam::tool
