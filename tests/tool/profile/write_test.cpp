#include "profile/write.hpp"

#include <gtest/gtest.h>

#include "profile/read.hpp"

namespace biseam::profile {
namespace {

LensSettings full_lens(double cx) {
  return {.cx = cx,
          .cy = 471.5,
          .p = 1000.0 / 7,
          .k = {{1.0 / 3, -1e-9, 0}},
          .fov = 195,
          .mount = 90,
          .yaw = 0.01 * cx,
          .pitch = -2.0 / 3,
          .roll = 4,
          .vignette = {{-1.0 / 30, 0.01}},
          .gain = {{1.1, 1, 2.0 / 3}}};
}

CameraSettings full_settings() {
  CameraSettings settings;
  settings.width = 1920;
  settings.baseline = 0.1 / 3;
  settings.picture = Size{960, 964};
  settings.lens[0] = full_lens(475);
  settings.lens[1] = full_lens(-0.1);
  settings.lens[1].yaw = 1e-9;
  settings.lens[1].pitch = -1.48;
  settings.lens[1].roll = 1.0 / 3;
  settings.blend = {.feather = 32, .trans_width = 16, .pyr_level = 4, .search = false, .findpath_width = 48, .inv_scale = 1.7};
  return settings;
}

void expect_equal(const LensSettings& a, const LensSettings& b) {
  EXPECT_EQ(a.cx, b.cx);
  EXPECT_EQ(a.cy, b.cy);
  EXPECT_EQ(a.p, b.p);
  EXPECT_EQ(a.k, b.k);
  EXPECT_EQ(a.fov, b.fov);
  EXPECT_EQ(a.mount, b.mount);
  EXPECT_EQ(a.yaw, b.yaw);
  EXPECT_EQ(a.pitch, b.pitch);
  EXPECT_EQ(a.roll, b.roll);
  EXPECT_EQ(a.vignette, b.vignette);
  EXPECT_EQ(a.gain, b.gain);
}

TEST(ProfileWriter, EveryValueComesBackToTheBit) {
  const CameraSettings settings = full_settings(), again = read(write(settings), "cam.toml");
  EXPECT_EQ(again.width, settings.width);
  EXPECT_EQ(again.baseline, settings.baseline);
  EXPECT_EQ(again.picture, settings.picture);
  for (int k = 0; k < 2; ++k) expect_equal(again.lens[k], settings.lens[k]);
  EXPECT_EQ(again.blend.feather, settings.blend.feather);
  EXPECT_EQ(again.blend.trans_width, settings.blend.trans_width);
  EXPECT_EQ(again.blend.pyr_level, settings.blend.pyr_level);
  EXPECT_EQ(again.blend.search, settings.blend.search);
  EXPECT_EQ(again.blend.findpath_width, settings.blend.findpath_width);
  EXPECT_EQ(again.blend.inv_scale, settings.blend.inv_scale);
}

TEST(ProfileWriter, WhatIsOpenIsLeftOut) {
  EXPECT_EQ(write({}), "");
  CameraSettings settings;
  settings.width = 640;
  settings.lens[1].p = 280.25;
  EXPECT_EQ(write(settings, "One.\nTwo."), "# One.\n# Two.\nwidth = 640\n\n[lens1]\np = 280.25\n");
}

}  // namespace
}  // namespace biseam::profile
