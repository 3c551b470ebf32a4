#include "ring/strip/shape.hpp"

#include <gtest/gtest.h>

#include <cstdlib>

namespace biseam::test {

using namespace biseam::ring;

TEST(StripShape, IsAQuarterOfThePanorama) {
  EXPECT_EQ(960, strip_length(3840));
  EXPECT_EQ(480, strip_length(1920));
  EXPECT_EQ(4096, strip_length(16384));
  EXPECT_EQ(16, strip_length(64));
  EXPECT_EQ(16, strip_length(2));
  for (int width = 64; width <= 16384; width += 2) {
    EXPECT_EQ(0, strip_length(width) % 16);
    if (width >= 64) {
      EXPECT_LE(std::abs(strip_length(width) - width / 4), 8);
    }
  }
}

TEST(StripShape, HasAsManyLevelsAsItCanBeHalved) {
  EXPECT_EQ(5, strip_levels({960, 56}));  // 60 x 4
  EXPECT_EQ(1, strip_levels({16, 4}));
  EXPECT_EQ(2, strip_levels({16, 5}));
  EXPECT_EQ(3, strip_levels({16, 100}));    // 4 x 25
  EXPECT_EQ(7, strip_levels({4096, 240}));  // 64 x 4
  EXPECT_EQ(8, strip_levels({4096, 512}));
}

}  // namespace biseam::test
