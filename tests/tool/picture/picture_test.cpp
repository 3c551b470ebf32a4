#include "picture/picture.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <random>

namespace biseam::tool {
namespace {

TEST(Picture, GreyHasNeutralChromaAndSurvivesBothWays) {
  Rgb grey(16, 16);
  for (int i = 0; i < 256; ++i) std::fill_n(&grey.bytes[std::size_t(i) * 3], 3, std::uint8_t(i));
  const Nv12 yuv = to_nv12(grey);
  for (int i = 0; i < 256; ++i) EXPECT_EQ(yuv.luma[std::size_t(i)], i);
  for (const std::uint8_t chroma : yuv.chroma) EXPECT_EQ(chroma, 128);
  EXPECT_EQ(to_rgb(yuv).bytes, grey.bytes);
}

TEST(Picture, PrimariesUseTheFullRange) {
  const std::uint8_t red[3] = {255, 0, 0}, blue[3] = {0, 0, 255}, white[3] = {255, 255, 255};
  std::uint8_t ycc[3];
  rgb_to_ycc(red, ycc);
  EXPECT_EQ(ycc[0], 76);
  EXPECT_EQ(ycc[2], 255);
  rgb_to_ycc(blue, ycc);
  EXPECT_EQ(ycc[0], 29);
  EXPECT_EQ(ycc[1], 255);
  rgb_to_ycc(white, ycc);
  EXPECT_EQ(ycc[0], 255);
}

TEST(Picture, ChromaIsTheMeanOfItsBlockRoundedOnce) {
  Rgb picture(2, 2);
  picture.bytes = {255, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  const Nv12 yuv = to_nv12(picture);
  EXPECT_EQ(yuv.chroma[1], std::uint8_t(std::floor((255 - 0.299 * 255) / 1.402 / 4 + 128.5)));
}

TEST(Picture, ALastOddRowAndColumnIsDropped) {
  const Nv12 yuv = to_nv12(Rgb(5, 3));
  EXPECT_EQ(yuv.width, 4);
  EXPECT_EQ(yuv.height, 2);
  EXPECT_EQ(yuv.luma.size(), 8u);
  EXPECT_EQ(yuv.chroma.size(), 4u);
}

TEST(Picture, ColoursConstantOverBlocksComeBackWithinRounding) {
  const unsigned seed = 20240611;
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  Rgb picture(64, 64);
  for (std::size_t y = 0; y < 64; y += 2) {
    for (std::size_t x = 0; x < 64; x += 2) {
      for (std::size_t c = 0; c < 3; ++c) {
        const std::uint8_t value = std::uint8_t(random() & 255);
        for (std::size_t k = 0; k < 4; ++k) picture.bytes[((y + k / 2) * 64 + x + k % 2) * 3 + c] = value;
      }
    }
  }
  const Rgb back = to_rgb(to_nv12(picture));
  for (std::size_t i = 0; i < back.bytes.size(); ++i) ASSERT_LE(std::abs(back.bytes[i] - picture.bytes[i]), 2) << i;
}

}  // namespace
}  // namespace biseam::tool
