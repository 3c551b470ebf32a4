#include "sheet/shrink.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "support/random_source.hpp"

namespace biseam::tool {
namespace {

TEST(Shrink, TakesTheMeanOfWhatAPixelCovers) {
  Rgb picture(4, 2);
  const std::uint8_t luma[8] = {0, 10, 100, 100, 20, 30, 102, 102};
  for (std::size_t i = 0; i < 24; ++i) picture.bytes[i] = luma[i / 3];
  const Rgb small = shrunk(picture, {2, 1});
  EXPECT_EQ(small.bytes, (std::vector<std::uint8_t>{15, 15, 15, 101, 101, 101}));
}

TEST(Shrink, SharesPixelsThatLieAcrossTwo) {
  Rgb picture(3, 1);
  picture.bytes = {0, 0, 0, 90, 90, 90, 30, 30, 30};
  EXPECT_EQ(shrunk(picture, {2, 1}).bytes, (std::vector<std::uint8_t>{30, 30, 30, 50, 50, 50}));
}

TEST(Shrink, LeavesAPictureOfTheSizeAsItIs) {
  Rgb picture(3, 2);
  for (std::size_t i = 0; i < 18; ++i) picture.bytes[i] = std::uint8_t(13 * i);
  EXPECT_EQ(shrunk(picture, {3, 2}).bytes, picture.bytes);
}

// Each pixel of the picture is cut into as many pieces as the target has pixels, of which a target pixel then has as many as
// the picture has pixels, along each side.
double plain_mean(const Rgb& picture, Size to, int x, int y, int channel) {
  double sum = 0;
  for (int j = 0; j < picture.height; ++j) {
    for (int i = 0; i < picture.width; ++i) {
      const int column = (x * picture.width + i) / to.width, row = (y * picture.height + j) / to.height;
      sum += picture.bytes[std::size_t((row * picture.width + column) * 3 + channel)];
    }
  }
  return sum / (double(picture.width) * picture.height);
}

TEST(Shrink, IsTheMeanOfTheAreaForAnySizes) {
  test::RandomSource random;
  for (const auto& [from, to] : {std::pair{Size{7, 5}, Size{3, 2}},
                                 {Size{31, 17}, Size{10, 17}},
                                 {Size{40, 3}, Size{1, 1}},
                                 {Size{13, 29}, Size{12, 28}},
                                 {Size{5, 4}, Size{8, 9}}}) {
    Rgb picture(from.width, from.height);
    for (std::uint8_t& code : picture.bytes) code = random.byte();
    const Rgb small = shrunk(picture, to);
    ASSERT_EQ(small.width, to.width);
    ASSERT_EQ(small.height, to.height);
    for (int y = 0; y < to.height; ++y) {
      for (int x = 0; x < to.width; ++x) {
        for (int c = 0; c < 3; ++c) {
          const double wanted = plain_mean(picture, to, x, y, c);
          ASSERT_NEAR(small.bytes[std::size_t((y * to.width + x) * 3 + c)], wanted, 0.5 + 1e-9) << x << " " << y;
        }
      }
    }
  }
}

TEST(Shrink, APlainPictureStaysPlain) {
  for (const int code : {0, 1, 127, 255}) {
    Rgb picture(97, 53);
    picture.bytes.assign(picture.bytes.size(), std::uint8_t(code));
    const Rgb small = shrunk(picture, {31, 7});
    EXPECT_TRUE(std::all_of(small.bytes.begin(), small.bytes.end(), [&](std::uint8_t own) { return own == code; })) << code;
  }
}

}  // namespace
}  // namespace biseam::tool
