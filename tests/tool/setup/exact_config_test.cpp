#include "setup/exact_config.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "biseam/stitcher.hpp"
#include "tool/support/expect_failure.hpp"

namespace biseam::tool {
namespace {

// Pictures of 960 x 960 that fit a panorama of 1920.
Setup fitting_setup() {
  tool::Setup setup;
  setup.camera = biseam_camera_of(960, 960, 195);
  for (BiseamLens& lens : setup.camera.lens) lens.p = 281;
  setup.width = 1920;
  return setup;
}

TEST(ExactConfig, SaysThePicturesAsTheyAre) {
  tool::Setup setup = fitting_setup();
  setup.camera.lens[0].cx = 478;
  setup.camera.lens[1].p = 280;
  const StitchConfig config = exact_config(setup, BISEAM_NV12);
  EXPECT_EQ(config.in_w, 960);
  EXPECT_EQ(config.in_h, 960);
  EXPECT_EQ(config.in_luma_stride, 960);
  EXPECT_EQ(config.out_w[0], 1920);
  EXPECT_EQ(config.out_h[0], 960);
  EXPECT_EQ(config.p0, 281);
  EXPECT_EQ(config.p1, 280);
  EXPECT_EQ(config.cx0, 478);
  EXPECT_EQ(config.cy1, 479.5f);
  EXPECT_TRUE(Stitcher::create(config));
}

TEST(ExactConfig, PicturesMayBeWiderThanHigh) {
  tool::Setup setup = fitting_setup();
  for (BiseamLens& lens : setup.camera.lens) {
    lens.width = 1600;
    lens.cx = 799.5;
  }
  EXPECT_EQ(exact_config(setup, BISEAM_I420).in_w, 1600);
}

TEST(ExactConfig, TheRollOfLens1IsInTheMatrix) {
  tool::Setup setup = fitting_setup();
  for (BiseamLens& lens : setup.camera.lens) lens.p = 275;
  setup.camera.lens[1].turn.roll = 30;
  const StitchConfig config = exact_config(setup, BISEAM_NV12);
  const float* m = config.lens_matrix;
  EXPECT_FLOAT_EQ(m[0], float(std::sqrt(0.75)));
  EXPECT_FLOAT_EQ(m[1], 0.5f);
  EXPECT_FLOAT_EQ(m[3], -0.5f);
  EXPECT_FLOAT_EQ(m[4], float(std::sqrt(0.75)));
  EXPECT_EQ(m[2], 0);
  EXPECT_EQ(m[5], 0);
  EXPECT_TRUE(Stitcher::create(config));
}

TEST(ExactConfig, WhatDoesNotFitIsSaid) {
  struct Misfit {
    std::function<void(tool::Setup&)> make;
    BiseamFormat format;
    std::string line;
  };
  const Misfit misfits[] = {
      {[](tool::Setup&) {}, BISEAM_I422, "the pictures are not of 8 bits with chroma of half the size"},
      {[](tool::Setup&) {}, BISEAM_P010, "the pictures are not of 8 bits with chroma of half the size"},
      {[](tool::Setup& s) { s.camera.lens[1].mount = 90; }, BISEAM_NV12, "the picture of lens 1 is not upright (mount 90)"},
      {[](tool::Setup& s) { s.camera.lens[0].k[1] = 0.5; }, BISEAM_NV12, "lens 0 is not equidistant (k is 0, 0.5, 0)"},
      {[](tool::Setup& s) { s.camera.lens[0].vignette[1] = 0.01; }, BISEAM_NV12,
       "the light of lens 0 needs correction (vignette, gain)"},
      {[](tool::Setup& s) { s.camera.lens[1].gain[2] = 1.1; }, BISEAM_NV12,
       "the light of lens 1 needs correction (vignette, gain)"},
      {[](tool::Setup& s) { s.camera.lens[0].turn.roll = 1; }, BISEAM_NV12,
       "lens 0 is turned by 0, 0, 1 degrees; it knows a roll of lens 1 alone"},
      {[](tool::Setup& s) { s.camera.lens[1].turn.yaw = 2; }, BISEAM_NV12,
       "lens 1 is turned by 2, 0, 0 degrees; it knows a roll of lens 1 alone"},
      {[](tool::Setup& s) { s.camera.lens[1].turn.pitch = -2; }, BISEAM_NV12,
       "lens 1 is turned by 0, -2, 0 degrees; it knows a roll of lens 1 alone"},
      {[](tool::Setup& s) { s.camera.lens[1].width = 1000; }, BISEAM_NV12, "the pictures differ in size, 960x960 and 1000x960"},
      {[](tool::Setup& s) { s.width = 3840; }, BISEAM_NV12,
       "pictures are as high as the panorama: these are 960 rows high, which makes --width 1920"},
  };
  for (const Misfit& misfit : misfits) {
    tool::Setup setup = fitting_setup();
    misfit.make(setup);
    const auto [code, line] = test::failure_of([&] { exact_config(setup, misfit.format); });
    EXPECT_EQ(code, ExitCode::settings);
    EXPECT_EQ(line, "--engine exact: " + misfit.line);
  }
}

// The blend is bounded by the lens that sees less far to a side.
TEST(ExactConfig, TheFeatherFollowsTheWorseLens) {
  tool::Setup setup = fitting_setup();
  const int both = exact_config(setup, BISEAM_NV12).feather;
  setup.camera.lens[1].cx = 460;
  EXPECT_LT(exact_config(setup, BISEAM_NV12).feather, both);
  setup = fitting_setup();
  setup.camera.lens[0].fov = 184;
  EXPECT_LT(exact_config(setup, BISEAM_NV12).feather, both);
}

}  // namespace
}  // namespace biseam::tool
