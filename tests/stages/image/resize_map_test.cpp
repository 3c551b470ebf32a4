#include "stages/image/resize_map.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>

namespace biseam::test {
namespace {

TEST(ResizeMap, CentresLieOnCentres) {
  EXPECT_EQ(0.5f, mapped_position(0, resize_scale(8, 4)));  // between the first two
  EXPECT_EQ(6.5f, mapped_position(3, resize_scale(8, 4)));
  EXPECT_EQ(-0.25f, mapped_position(0, resize_scale(4, 8)));
  EXPECT_EQ(3.25f, mapped_position(7, resize_scale(4, 8)));
  for (int x = 0; x < 50; ++x) EXPECT_EQ(static_cast<float>(x), mapped_position(x, resize_scale(50, 50)));
}

TEST(ResizeMap, PicksTheSampleAtOrBeforeThePositionInsideTheSource) {
  for (int32_t src = 1; src < 40; ++src) {
    for (int32_t dst = 1; dst < 40; ++dst) {
      const float scale = resize_scale(src, dst);
      for (int32_t i = 0; i < dst; ++i) {
        const double floor = std::floor(static_cast<double>(mapped_position(i, scale)));
        const int32_t expected = floor < 0 ? 0 : floor > src - 1 ? src - 1 : static_cast<int32_t>(floor);
        ASSERT_EQ(expected, picked_position(i, scale, src)) << i << " of " << dst << " in " << src;
      }
    }
  }
}

// Positions are floats, which can lie past the end of a large source.
TEST(ResizeMap, APositionRoundedPastTheEndTakesTheLastSample) {
  EXPECT_EQ(2147483648.0f, mapped_position(INT32_MAX - 1, 1.0f));
  EXPECT_EQ(INT32_MAX - 1, picked_position(INT32_MAX - 1, 1.0f, INT32_MAX));
}

}  // namespace
}  // namespace biseam::test
