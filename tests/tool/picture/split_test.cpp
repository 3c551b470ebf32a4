#include "picture/split.hpp"

#include <gtest/gtest.h>

#include "tool/support/expect_failure.hpp"

namespace biseam::tool {
namespace {

TEST(Split, HalvesAreViewsOfTheSamePlanes) {
  const Nv12 picture(16, 8);
  const auto [left, right] = split(picture, Layout::side_by_side, "in.png");
  EXPECT_EQ(left.width, 8);
  EXPECT_EQ(right.height, 8);
  EXPECT_EQ(left.luma, picture.luma.data());
  EXPECT_EQ(right.luma, picture.luma.data() + 8);
  EXPECT_EQ(right.chroma, picture.chroma.data() + 8);
  const auto [top, bottom] = split(picture, Layout::top_bottom, "in.png");
  EXPECT_EQ(top.height, 4);
  EXPECT_EQ(bottom.width, 16);
  EXPECT_EQ(bottom.luma, picture.luma.data() + 4 * 16);
  EXPECT_EQ(bottom.chroma, picture.chroma.data() + 2 * 16);
}

TEST(Split, HalvesOfOddSidesAreRefused) {
  const Nv12 picture(18, 10);
  const auto [code, across] = test::failure_of([&] { split(picture, Layout::side_by_side, "in.png"); });
  EXPECT_EQ(code, ExitCode::input);
  EXPECT_EQ(across, "in.png: two circles side by side need a width divisible by 4, it is 18");
  EXPECT_EQ(test::failure_of([&] { split(picture, Layout::top_bottom, "in.png"); }).second,
            "in.png: two circles one above the other need a height divisible by 4, it is 10");
}

}  // namespace
}  // namespace biseam::tool
