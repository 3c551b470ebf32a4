#include "setup/blend_values.hpp"

#include <gtest/gtest.h>

#include "biseam/stitcher.hpp"
#include "setup/exact_config.hpp"
#include "tool/support/expect_failure.hpp"

namespace biseam::tool {
namespace {

LensReach seeing(double degrees, bool is_cut = false) { return {0, degrees, is_cut, 300}; }

// Columns either side of the seams for a panorama of 1920.
profile::BlendSettings feather_of(int feather) {
  profile::BlendSettings blend;
  blend.feather = feather;
  return blend;
}

// Whether the engine takes the defaults for pictures that fit a panorama of a width, whose circles have an angle of view.
StitchConfig usual_config(int width, double fov) {
  tool::Setup setup;
  setup.camera = biseam_camera_of(width / 2, width / 2, fov);
  for (BiseamLens& lens : setup.camera.lens) lens.p = width / 2 / 3.42;
  setup.width = width;
  return exact_config(setup, BISEAM_NV12);
}

TEST(BlendValues, TheFeatherFitsTheOverlap) {
  const BlendValues values = settle_blend({}, 1920, seeing(97.5));
  EXPECT_EQ(values.feather, 32);
  EXPECT_LE(values.feather * 360.0 / 1920, 7.5);
  EXPECT_EQ(settle_blend({}, 1920, seeing(94)).feather, 16);
  EXPECT_EQ(settle_blend({}, 3840, seeing(94)).feather, 32);
}

TEST(BlendValues, AWideOverlapIsNotUsedUp) { EXPECT_EQ(settle_blend({}, 1920, seeing(140)).feather, 60); }

TEST(BlendValues, TheTransitionLeavesRoomBesideAWideFeather) {
  const BlendValues values = settle_blend(feather_of(200), 1920, seeing(140));
  EXPECT_EQ(values.trans_width, 280);
  EXPECT_EQ(settle_blend(feather_of(600), 1920, seeing(140)).trans_width, 0);
}

TEST(BlendValues, TooLittleOverlapIsRefusedUnlessAFeatherIsGiven) {
  for (const double reach : {-5.0, 80.0, 90.0, 90.9}) {
    EXPECT_EQ(test::failure_of([&] { settle_blend({}, 1920, seeing(reach)); }).first, ExitCode::settings) << reach;
    EXPECT_EQ(settle_blend(feather_of(6), 1920, seeing(reach)).feather, 6);
  }
}

TEST(BlendValues, TooLittleOverlapIsToldInTheCamerasWords) {
  const auto told = [](int width, const LensReach& lens) {
    return test::failure_of([&] { settle_blend({}, width, lens); }).second;
  };
  EXPECT_EQ(
      told(1920, seeing(89, true)),
      "lens 0: its picture ends 89.0 degrees off the axis, and a blend needs 90.9: the circle is cut by the picture's edge, "
      "or p (300) is too large; below 293.6 it would do");
  EXPECT_EQ(told(1920, seeing(90)),
            "lens 0: its circle ends 90.0 degrees off the axis, and a blend needs 90.9: fov is too small");
  EXPECT_EQ(told(128, seeing(97.5)),
            "a panorama of 128 columns is too small: the lenses share 2.1 of them beyond each seam, and a blend needs 4; give "
            "--width 240 or more, or larger pictures");
  EXPECT_EQ(settle_blend({}, 240, seeing(97.5)).feather, 4);
}

TEST(BlendValues, AFeatherWithoutRoomForASearchIsCutStraight) {
  EXPECT_FALSE(settle_blend(feather_of(2), 1920, seeing(97.5)).search);
  EXPECT_TRUE(settle_blend(feather_of(4), 1920, seeing(97.5)).search);
}

// What is left open never contradicts itself, however little the lenses share.
TEST(BlendValues, DefaultsWorkWithEveryOverlap) {
  for (const int width : {960, 1920, 3840}) {
    for (const double reach : {90.5, 91.0, 91.5, 92.0, 93.0, 95.0}) {
      if ((reach - 90) / 360 * width * 0.8 < 4) continue;
      const StitchConfig config = usual_config(width, 2 * reach);
      const auto made = Stitcher::create(config);
      EXPECT_TRUE(made) << width << ", " << reach << ": " << made.error().text();
      EXPECT_NE(config.findpath_enable, 0);
    }
  }
}

TEST(BlendValues, ValuesThatAreGivenAreTaken) {
  profile::BlendSettings settings;
  settings.feather = 20;
  settings.trans_width = 12;
  settings.pyr_level = 2;
  settings.findpath_width = 30;
  settings.inv_scale = 1.5;
  settings.search = false;
  const BlendValues values = settle_blend(settings, 1920, seeing(97.5));
  EXPECT_EQ(values.feather, 20);
  EXPECT_EQ(values.trans_width, 12);
  EXPECT_EQ(values.pyr_level, 2);
  EXPECT_EQ(values.findpath_width, 30);
  EXPECT_EQ(values.inv_scale, 1.5);
  EXPECT_FALSE(values.search);
}

TEST(BlendValues, DefaultsWorkAtEveryKindOfWidth) {
  for (const int width : {384, 392, 400, 408, 512, 648, 776, 1000, 1024, 1920}) {
    const auto made = Stitcher::create(usual_config(width, 195));
    ASSERT_TRUE(made) << width << ": " << made.error().text();
  }
}

}  // namespace
}  // namespace biseam::tool
