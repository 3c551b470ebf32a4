#include "scene/profile.hpp"

#include <gtest/gtest.h>

#include <numbers>

#include "profile/read.hpp"

namespace biseam::scene {
namespace {

constexpr double kWide = 195 * std::numbers::pi / 180;

TEST(SceneProfile, SaysWhatTheCameraIs) {
  const Fisheye lens0 = Fisheye::fitting(0, 1080, kWide);
  Lens moved = lens0.lens();
  moved.cx = 541.25;
  moved.cy = 538.5;
  const profile::CameraSettings settings = profile::read(profile_text(lens0, {1, moved}, 0.03, 1920), "profile");
  EXPECT_EQ(settings.baseline, 0.03);
  EXPECT_EQ(settings.width, 1920);
  EXPECT_EQ(settings.picture, (profile::Size{1080, 1080}));
  EXPECT_EQ(settings.lens[0].cx, 539.5);
  EXPECT_EQ(settings.lens[1].cx, 541.25);
  EXPECT_EQ(settings.lens[1].cy, 538.5);
  EXPECT_NEAR(*settings.lens[0].p, lens0.lens().p, 1e-6);
  EXPECT_EQ(settings.lens[1].fov, 195);
}

// Thousandths of pixels and degrees, millionths of pixels per radian: what a reader of the file can take in.
TEST(SceneProfile, IsRoundedToFewDigits) {
  Lens lens0 = Fisheye::fitting(0, 500, kWide + 1e-8).lens();
  lens0.cx = 249.50004;
  lens0.cy = 249.49996;
  lens0.p = 123.45678949;
  const Fisheye lens1 = Fisheye::fitting(1, 500, kWide - 1e-8);
  const profile::CameraSettings settings = profile::read(profile_text({0, lens0}, lens1, 0, 64), "profile");
  EXPECT_FALSE(settings.baseline);
  EXPECT_EQ(settings.lens[0].cx, 249.5);
  EXPECT_EQ(settings.lens[0].cy, 249.5);
  EXPECT_EQ(settings.lens[0].p, 123.456789);
  EXPECT_EQ(settings.lens[0].fov, 195);
  EXPECT_EQ(settings.lens[1].fov, 195);
}

}  // namespace
}  // namespace biseam::scene
