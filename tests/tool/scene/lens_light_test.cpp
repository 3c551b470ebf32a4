#include "scene/lens_light.hpp"

#include <gtest/gtest.h>

#include <numbers>

namespace biseam::scene {
namespace {

constexpr double kFov = 195 * std::numbers::pi / 180;

TEST(LensGain, IsSharedByBothLenses) {
  const LightDifference difference{.exposure = 1, .drift = 0.5, .temperature = 500};
  const Vec3 a = lens_gain(difference, 0, 0, 2), b = lens_gain(difference, 1, 0, 2);
  EXPECT_NEAR(a.y, 2, 1e-12);
  EXPECT_NEAR(b.y, 0.5, 1e-12);
  EXPECT_NEAR(a.x * b.x, 1, 0.01);
  EXPECT_NEAR(a.z * b.z, 1, 0.01);
}

TEST(LensGain, AHigherWhiteBalanceIsWarmer) {
  const Vec3 gain = lens_gain({.temperature = 1000}, 0, 0, 0);
  EXPECT_EQ(gain.y, 1);
  EXPECT_GT(gain.x, 1.03);
  EXPECT_LT(gain.x, 1.07);
  EXPECT_LT(gain.z, 0.95);
  EXPECT_GT(gain.z, 0.88);
}

TEST(LensGain, DifferencesBeginAtTheirFrameAndDriftsAtTheStart) {
  const LightDifference difference{.exposure = 1, .drift = 1, .temperature = 500, .from = 3};
  const Vec3 before = lens_gain(difference, 0, 2, 1), after = lens_gain(difference, 0, 3, 1);
  for (const double factor : {before.x, before.y, before.z}) EXPECT_NEAR(factor, std::sqrt(2.0), 1e-12);
  EXPECT_NEAR(after.y, 2, 1e-12);
  EXPECT_NE(after.x, after.z);
}

TEST(Shade, FallsOffToTheCirclesEdgeAndNotBeyond) {
  const Fisheye lens = Fisheye::fitting(0, 101, kFov);
  Frame light{101, 101, std::vector<Vec3>(101 * 101, Vec3{1, 2, 3})};
  shade(light, {.vignette = 0.4}, lens);
  const auto at = [&](int x, int y) { return light.pixels[std::size_t(y) * 101 + std::size_t(x)]; };
  EXPECT_EQ(at(50, 50).z, 3);
  EXPECT_NEAR(at(75, 50).x, 0.9, 0.003);
  EXPECT_NEAR(at(50, 0).y, 2 * 0.6, 0.03);
  EXPECT_EQ(at(0, 0).x, 1);
}

TEST(Shade, FlareIsAVeilThatIsBrightestOnTheRight) {
  const Fisheye lens = Fisheye::fitting(0, 101, kFov);
  Frame light{101, 101, std::vector<Vec3>(101 * 101)};
  shade(light, {.flare = 0.2}, lens);
  const auto at = [&](int x, int y) { return light.pixels[std::size_t(y) * 101 + std::size_t(x)].x; };
  EXPECT_NEAR(at(50, 50), 0.1, 1e-12);
  EXPECT_NEAR(at(99, 50), 0.2, 0.005);
  EXPECT_NEAR(at(1, 50), 0, 0.005);
  EXPECT_EQ(at(0, 0), 0);
}

}  // namespace
}  // namespace biseam::scene
