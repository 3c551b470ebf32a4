#include "stitch/seam_overlay.hpp"

#include <gtest/gtest.h>

namespace biseam::tool {
namespace {

std::vector<std::uint8_t> pixel(const Rgb& picture, int x, int y) {
  const auto at = picture.bytes.begin() + (y * picture.width + x) * 3;
  return {at, at + 3};
}

// Joined in columns [5, 11), with the seam between 7 and 8.
SeamMap upright_seam(int width, int height) {
  SeamMap map{{width, height}, {}};
  for (int k = 0; k < width * height; ++k) {
    const int x = k % width;
    map.zones.push_back(x < 5 || x > 10 ? Zone::one_lens : x < 8 ? Zone::lens0_side : Zone::lens1_side);
  }
  return map;
}

TEST(SeamOverlay, TintsWhereLensesAreJoinedAndDrawsTheChangeOfSides) {
  Rgb panorama(16, 4);
  draw_seams(upright_seam(16, 4), panorama);
  const std::vector<std::uint8_t> black{0, 0, 0}, seam{255, 0, 60};
  for (int y = 0; y < 4; ++y) {
    EXPECT_EQ(pixel(panorama, 4, y), black);
    EXPECT_EQ(pixel(panorama, 11, y), black);
    EXPECT_NE(pixel(panorama, 5, y), black);
    EXPECT_NE(pixel(panorama, 10, y), black);
    for (int x = 5; x <= 10; ++x) EXPECT_EQ(pixel(panorama, x, y) == seam, x == 7) << x;
  }
}

TEST(SeamOverlay, ALayerIsTransparentElsewhereAndOpaqueAtTheSeam) {
  Rgba layer(16, 4);
  draw_seams(upright_seam(16, 4), layer);
  const std::vector<std::uint8_t> nothing{0, 0, 0, 0}, joined{255, 160, 0, 56}, seam{255, 0, 60, 255};
  for (int y = 0; y < 4; ++y) {
    for (int x = 0; x < 16; ++x) {
      const auto at = layer.bytes.begin() + (y * 16 + x) * 4;
      const std::vector<std::uint8_t> found{at, at + 4};
      EXPECT_EQ(found, x < 5 || x > 10 ? nothing : x == 7 ? seam : joined) << x;
    }
  }
}

TEST(SeamOverlay, SeamsAreDrawnAcrossRowsAndTheFirstColumnToo) {
  SeamMap map{{8, 4}, std::vector<Zone>(32, Zone::lens0_side)};
  for (int k = 16; k < 32; ++k) map.zones[std::size_t(k)] = Zone::lens1_side;
  for (int y = 0; y < 2; ++y) map.zones[std::size_t(8 * y)] = Zone::lens1_side;
  Rgb panorama(8, 4);
  draw_seams(map, panorama);
  const std::vector<std::uint8_t> seam{255, 0, 60};
  EXPECT_EQ(pixel(panorama, 7, 0), seam);  // beside the first column
  EXPECT_EQ(pixel(panorama, 0, 0), seam);
  EXPECT_EQ(pixel(panorama, 4, 1), seam);
  EXPECT_NE(pixel(panorama, 4, 0), seam);
  EXPECT_NE(pixel(panorama, 4, 2), seam);
}

TEST(SeamOverlay, AWideLineStaysInsideThePicture) {
  const int width = 3840, height = 8;
  SeamMap map{{width, height}, std::vector<Zone>(std::size_t(width) * height, Zone::lens0_side)};
  for (int y = 0; y < height; ++y) map.zones[std::size_t(y) * width + width - 1] = Zone::lens1_side;
  Rgb panorama(width, height);
  draw_seams(map, panorama);
  EXPECT_EQ(pixel(panorama, width - 1, height - 1), (std::vector<std::uint8_t>{255, 0, 60}));
}

}  // namespace
}  // namespace biseam::tool
