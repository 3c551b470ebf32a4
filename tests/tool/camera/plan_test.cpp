#include "camera/plan.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "biseam/stitcher.hpp"
#include "camera/blend_values.hpp"
#include "tool/support/expect_failure.hpp"

namespace biseam::tool {
namespace {

Lens lens_at(double cx, double cy, double p, double reach = 97.5, Turn turn = {}) { return {{cx, cy}, p, reach, turn}; }

Lens seeing(double reach, bool is_cut = false) {
  Lens lens = lens_at(0, 0, 300, reach);
  lens.is_cut = is_cut;
  return lens;
}

// Columns either side of the seams for a panorama of 1920.
profile::BlendSettings feather_of(int feather) {
  profile::BlendSettings blend;
  blend.feather = feather;
  return blend;
}

Plan plan_of(const Lens& lens0, const Lens& lens1, Size size, int width, const profile::BlendSettings& blend = {}) {
  return make_plan({lens0, lens1}, {size, size}, blend, width);
}

TEST(Plan, APictureOfTheRightSizeStaysAsItIs) {
  const Lens lens = lens_at(479.5, 479.5, 281);
  const Plan plan = plan_of(lens, lens, {960, 960}, 1920);
  for (const LensPlan& k : plan.lens) {
    EXPECT_TRUE(k.as_is);
    EXPECT_EQ(k.missing, 0);
  }
  EXPECT_EQ(plan.config.in_w, 960);
  EXPECT_EQ(plan.config.in_h, 960);
  EXPECT_EQ(plan.config.p0, 281);
  EXPECT_EQ(plan.config.cx1, 479.5f);
  EXPECT_TRUE(Stitcher::create(plan.config));
}

TEST(Plan, AWidePictureOfTheRightHeightStaysAsItIs) {
  const Lens lens = lens_at(799.5, 479.5, 281);
  const Plan plan = plan_of(lens, lens, {1600, 960}, 1920);
  EXPECT_TRUE(plan.lens[0].as_is);
  EXPECT_EQ(plan.config.in_w, 1600);
}

TEST(Plan, AnotherHeightIsResampledToFillTheEngines) {
  const Lens lens = lens_at(1347, 1303, 800);
  const Plan plan = plan_of(lens, lens, {2704, 2624}, 1920);
  EXPECT_FALSE(plan.lens[0].as_is);
  EXPECT_EQ(plan.config.in_h, 960);
  EXPECT_GT(plan.config.p0, 300);
  EXPECT_TRUE(Stitcher::create(plan.config));
}

TEST(Plan, ACroppedCircleIsCompletedAndTold) {
  const Lens lens0 = lens_at(475, 471, 280), lens1 = lens_at(478, 478, 277);
  const Plan plan = plan_of(lens0, lens1, {960, 960}, 1920, feather_of(40));
  EXPECT_NEAR(plan.lens[0].missing, 0.0, 6);
  EXPECT_TRUE(Stitcher::create(plan.config));
  const Plan cropped = plan_of(lens_at(400, 471, 280), lens1, {960, 960}, 1920, feather_of(40));
  EXPECT_NEAR(cropped.lens[0].missing, 280 * 97.5 / 180 * 3.14159265 - 400, 3);
  EXPECT_FALSE(cropped.lens[0].as_is);
  EXPECT_TRUE(Stitcher::create(cropped.config));
}

TEST(Plan, TheRollIsInTheMatrixAndNeedsNoResampling) {
  const Lens lens0 = lens_at(479.5, 479.5, 275), lens1 = lens_at(479.5, 479.5, 275, 97.5, {0, 0, 30});
  const Plan plan = plan_of(lens0, lens1, {960, 960}, 1920);
  EXPECT_TRUE(plan.lens[1].as_is);
  const float* m = plan.config.lens_matrix;
  EXPECT_FLOAT_EQ(m[0], float(std::sqrt(0.75)));
  EXPECT_FLOAT_EQ(m[1], 0.5f);
  EXPECT_FLOAT_EQ(m[3], -0.5f);
  EXPECT_FLOAT_EQ(m[4], float(std::sqrt(0.75)));
  EXPECT_EQ(m[2], 0);
  EXPECT_EQ(m[5], 0);
}

TEST(Plan, YawAndPitchResampleLens1Only) {
  const Lens lens0 = lens_at(479.5, 479.5, 281), lens1 = lens_at(479.5, 479.5, 281, 97.5, {1, 0, 0});
  const Plan plan = plan_of(lens0, lens1, {960, 960}, 1920);
  EXPECT_TRUE(plan.lens[0].as_is);
  EXPECT_FALSE(plan.lens[1].as_is);
  EXPECT_EQ(plan.lens[1].target.p, 281);
}

TEST(Plan, TheTablesStayInsideWhateverTheLenses) {
  const unsigned seed = 4711;
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  const auto between = [&](double low, double high) { return std::uniform_real_distribution<double>(low, high)(random); };
  for (int round = 0; round < 40; ++round) {
    const int width = 8 * int(between(30, 130));
    const Size size{2 * int(between(50, 400)), 2 * int(between(50, 400))};
    Lens lenses[2];
    for (Lens& lens : lenses) {
      lens = lens_at(between(-0.2, 1.2) * size.width, between(-0.2, 1.2) * size.height, between(20, 400), 96,
                     {between(-45, 45), between(-45, 45), between(-45, 45)});
    }
    lenses[0].turn = {};
    const Plan plan = make_plan(lenses, {size, size}, feather_of(8), width);
    const auto made = Stitcher::create(plan.config);
    EXPECT_TRUE(made) << made.error().text();
  }
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
  const auto told = [](int width, const Lens& lens) { return test::failure_of([&] { settle_blend({}, width, lens); }).second; };
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
      const Lens lens = lens_at((width / 2 - 1) / 2.0, (width / 2 - 1) / 2.0, width / 2 / 3.42, reach);
      if ((reach - 90) / 360 * width * 0.8 < 4) continue;
      const Plan plan = make_plan({lens, lens}, {{width / 2, width / 2}, {width / 2, width / 2}}, {}, width);
      const auto made = Stitcher::create(plan.config);
      EXPECT_TRUE(made) << width << ", " << reach << ": " << made.error().text();
      EXPECT_NE(plan.config.findpath_enable, 0);
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
    const Lens lens = lens_at((width / 2 - 1) / 2.0, (width / 2 - 1) / 2.0, width / 2 / 3.42);
    const Plan plan = make_plan({lens, lens}, {{width / 2, width / 2}, {width / 2, width / 2}}, {}, width);
    StitchConfig config = plan.config;
    const auto made = Stitcher::create(config);
    ASSERT_TRUE(made) << width << ": " << made.error().text();
  }
}

}  // namespace
}  // namespace biseam::tool
