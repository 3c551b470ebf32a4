#include "stitch/seam_overlay.hpp"

#include <gtest/gtest.h>

namespace biseam::tool {
namespace {

std::vector<std::uint8_t> pixel(const Rgb& picture, int x, int y) {
  const auto at = picture.bytes.begin() + (y * picture.width + x) * 3;
  return {at, at + 3};
}

TEST(SeamOverlay, TintsTheBandOnlyAndDrawsTheChangeOfSides) {
  std::vector<std::int32_t> weights(6 * 4 * 3, 0);
  for (std::size_t y = 0; y < 4; ++y) {
    for (std::size_t x = 0; x < 3; ++x) weights[(y * 6 + x) * 3] = 64;
  }
  Rgb panorama(16, 4);
  draw_band({5, 6, 4, weights.data(), 18, 3}, panorama);
  const std::vector<std::uint8_t> black{0, 0, 0}, seam{255, 0, 60};
  for (int y = 0; y < 4; ++y) {
    EXPECT_EQ(pixel(panorama, 4, y), black);
    EXPECT_EQ(pixel(panorama, 11, y), black);
    EXPECT_NE(pixel(panorama, 5, y), black);
    EXPECT_NE(pixel(panorama, 10, y), black);
    for (int x = 5; x <= 10; ++x) EXPECT_EQ(pixel(panorama, x, y) == seam, x == 7) << x;
  }
}

TEST(SeamOverlay, ALayerIsTransparentOutsideTheBandAndOpaqueAtTheSeam) {
  std::vector<std::int32_t> weights(6 * 4, 0);
  for (std::size_t y = 0; y < 4; ++y) weights[y * 6] = weights[y * 6 + 1] = 64;
  Rgba layer(16, 4);
  draw_band({5, 6, 4, weights.data(), 6, 1}, layer);
  const std::vector<std::uint8_t> nothing{0, 0, 0, 0}, band{255, 160, 0, 56}, seam{255, 0, 60, 255};
  for (int y = 0; y < 4; ++y) {
    for (int x = 0; x < 16; ++x) {
      const auto at = layer.bytes.begin() + (y * 16 + x) * 4;
      const std::vector<std::uint8_t> found{at, at + 4};
      EXPECT_EQ(found, x < 5 || x > 10 ? nothing : x == 6 ? seam : band) << x;
    }
  }
}

TEST(SeamOverlay, AWideLineStaysInsideThePicture) {
  const int width = 3840, height = 8;
  std::vector<std::int32_t> weights(std::size_t(4 * height) * 3, 0);
  for (std::size_t y = 0; y < std::size_t(height); ++y) weights[y * 12] = weights[y * 12 + 3] = weights[y * 12 + 6] = 64;
  Rgb panorama(width, height);
  draw_band({width - 4, 4, height, weights.data(), 12, 3}, panorama);
  EXPECT_EQ(pixel(panorama, width - 1, height - 1), (std::vector<std::uint8_t>{255, 0, 60}));
}

}  // namespace
}  // namespace biseam::tool
