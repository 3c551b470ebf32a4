#include "picture/quarter_turn.hpp"

#include <gtest/gtest.h>

#include <numeric>

namespace biseam::tool {
namespace {

Nv12 numbered(int width, int height) {
  Nv12 picture(width, height);
  std::iota(picture.luma.begin(), picture.luma.end(), std::uint8_t(0));
  std::iota(picture.chroma.begin(), picture.chroma.end(), std::uint8_t(100));
  return picture;
}

TEST(QuarterTurn, NoneChangesNothing) {
  const Nv12 picture = numbered(6, 4), same = undo_quarter_turn(picture, 0);
  EXPECT_EQ(same.luma, picture.luma);
  EXPECT_EQ(same.chroma, picture.chroma);
}

// Turned clockwise by 90 degrees the upright top row became the right column.
TEST(QuarterTurn, NinetyBringsTheRightColumnToTheTop) {
  const Nv12 turned = numbered(6, 4), upright = undo_quarter_turn(turned, 90);
  ASSERT_EQ(upright.width, 4);
  ASSERT_EQ(upright.height, 6);
  for (std::size_t x = 0; x < 4; ++x) EXPECT_EQ(upright.luma[x], turned.luma[x * 6 + 5]);
  EXPECT_EQ(upright.chroma[0], turned.chroma[4]);
  EXPECT_EQ(upright.chroma[1], turned.chroma[5]);
}

TEST(QuarterTurn, HalfATurnReversesLumaAndKeepsChromaPairs) {
  const Nv12 turned = numbered(4, 2), upright = undo_quarter_turn(turned, 180);
  EXPECT_EQ(upright.luma, (std::vector<std::uint8_t>{7, 6, 5, 4, 3, 2, 1, 0}));
  EXPECT_EQ(upright.chroma, (std::vector<std::uint8_t>{102, 103, 100, 101}));
}

TEST(QuarterTurn, FourTimesComesBack) {
  const Nv12 picture = numbered(6, 4);
  for (const int degrees : {90, 270}) {
    Nv12 turned = picture;
    for (int k = 0; k < 4; ++k) turned = undo_quarter_turn(turned, degrees);
    EXPECT_EQ(turned.luma, picture.luma);
    EXPECT_EQ(turned.chroma, picture.chroma);
  }
}

TEST(QuarterTurn, PointsMoveWithTheirPixels) {
  const Nv12 turned = numbered(6, 4);
  for (const int degrees : {0, 90, 180, 270}) {
    const Nv12 upright = undo_quarter_turn(turned, degrees);
    for (int y = 0; y < 4; ++y) {
      for (int x = 0; x < 6; ++x) {
        const Point to = undo_quarter_turn(Point{double(x), double(y)}, {6, 4}, degrees);
        ASSERT_EQ(upright.luma[std::size_t(to.y) * std::size_t(upright.width) + std::size_t(to.x)],
                  turned.luma[std::size_t(y * 6 + x)])
            << degrees << " " << x << " " << y;
      }
    }
  }
}

}  // namespace
}  // namespace biseam::tool
