#include "camera/warp.hpp"

#include <gtest/gtest.h>

#include <random>

#include "tool/support/sphere.hpp"

namespace biseam::tool {
namespace {

using test::FisheyeView;
using test::paint_fisheye;
using test::worst_difference;

Lens lens_of(const FisheyeView& view) { return {{view.cx, view.cy}, view.p, 97, {view.yaw, view.pitch, view.roll}}; }

WarpTarget target_of(const FisheyeView& view) { return {{view.width, view.height}, {view.cx, view.cy}, view.p}; }

void expect_same_picture(const Nv12& got, const Nv12& expected, int tolerance) {
  ASSERT_EQ(got.luma.size(), expected.luma.size());
  EXPECT_LE(worst_difference(got.luma, expected.luma), tolerance);
  EXPECT_LE(worst_difference(got.chroma, expected.chroma), tolerance);
}

TEST(Warp, OntoItselfChangesNothing) {
  const unsigned seed = 7;
  std::mt19937 random(seed);
  Nv12 picture(40, 30);
  for (std::uint8_t& sample : picture.luma) sample = std::uint8_t(random());
  for (std::uint8_t& sample : picture.chroma) sample = std::uint8_t(random());
  const Nv12 same = warp_fisheye(picture, {{20.25, 14}, 12, 97, {}}, {{40, 30}, {20.25, 14}, 12});
  EXPECT_EQ(same.luma, picture.luma);
  EXPECT_EQ(same.chroma, picture.chroma);
}

TEST(Warp, AFlatPictureStaysFlatAtEveryScale) {
  for (const int value : {0, 1, 127, 255}) {
    Nv12 picture(64, 48);
    std::fill(picture.luma.begin(), picture.luma.end(), std::uint8_t(value));
    std::fill(picture.chroma.begin(), picture.chroma.end(), std::uint8_t(value));
    for (const double scale : {0.3, 0.77, 1.0, 2.5}) {
      const Nv12 out = warp_fisheye(picture, {{31, 23}, 20, 97, {1, 2, 3}}, {{50, 50}, {24.3, 25.1}, 20 * scale});
      for (const std::uint8_t sample : out.luma) ASSERT_EQ(sample, value) << scale;
      for (const std::uint8_t sample : out.chroma) ASSERT_EQ(sample, value) << scale;
    }
  }
}

TEST(Warp, TheNearestEdgePixelStandsInOutside) {
  Nv12 picture(8, 8);
  for (std::size_t i = 0; i < 64; ++i) picture.luma[i] = std::uint8_t(10 + i / 8);
  const Nv12 out = warp_fisheye(picture, {{4, 4}, 4, 97, {}}, {{8, 40}, {4, 20}, 4});
  for (std::size_t x = 0; x < 8; ++x) {
    EXPECT_EQ(out.luma[x], 10);
    EXPECT_EQ(out.luma[39 * 8 + x], 17);
  }
}

TEST(Warp, CentreAndScaleChangeThePictureAsAnotherCameraWould) {
  const FisheyeView from{300, 280, 147.3, 141.9, 88.0};
  for (const auto& [p, tolerance] : {std::pair{40.0, 1}, std::pair{88.0, 1}, std::pair{170.0, 1}}) {
    const FisheyeView to{240, 220, 118.4, 111.2, p};
    SCOPED_TRACE(p);
    const int half = 60;  // inside the source at every scale, rings of the filter included
    const Nv12 got = warp_fisheye(paint_fisheye(from, 0), lens_of(from), target_of(to)), expected = paint_fisheye(to, 0);
    for (int y = 111 - half; y < 111 + half; ++y) {
      for (int x = 118 - half; x < 118 + half; ++x) {
        const std::size_t i = std::size_t(y * 240 + x);
        ASSERT_LE(std::abs(got.luma[i] - expected.luma[i]), tolerance) << x << " " << y;
      }
    }
    ASSERT_LE(std::abs(got.chroma[55 * 240 + 118] - expected.chroma[55 * 240 + 118]), 1);
  }
}

TEST(Warp, YawAndPitchAreTakenOutAndTheRollStays) {
  const unsigned seed = 99;
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> degrees(-15, 15);
  for (int round = 0; round < 6; ++round) {
    FisheyeView turned{480, 480, 239.5, 239.5, 120.0};
    turned.yaw = round == 0 ? 10 : degrees(random);
    turned.pitch = round == 0 ? 0 : degrees(random);
    turned.roll = round < 2 ? 0 : degrees(random);
    SCOPED_TRACE(testing::Message() << turned.yaw << " " << turned.pitch << " " << turned.roll);
    FisheyeView rolled{240, 240, 119.5, 119.5, 80.0};  // sees less, so that the turn never leaves the source
    rolled.roll = turned.roll;
    const Nv12 got = warp_fisheye(paint_fisheye(turned, 1), lens_of(turned), target_of(rolled));
    expect_same_picture(got, paint_fisheye(rolled, 1), 2);
  }
}

}  // namespace
}  // namespace biseam::tool
