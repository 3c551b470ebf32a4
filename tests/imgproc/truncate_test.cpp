#include "imgproc/truncate.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

namespace biseam::test {
namespace {

TEST(TruncateToInt, RoundsTowardZero) {
  EXPECT_EQ(2, truncate_to_int(2.99f));
  EXPECT_EQ(-2, truncate_to_int(-2.99f));
  EXPECT_EQ(0, truncate_to_int(-0.5f));
  EXPECT_EQ(0, truncate_to_int(std::numeric_limits<float>::denorm_min()));
}

TEST(TruncateToInt, SaturatesPastTheRange) {
  EXPECT_EQ(INT32_MAX, truncate_to_int(2147483648.0f));
  EXPECT_EQ(2147483520, truncate_to_int(2147483520.0f));
  EXPECT_EQ(INT32_MIN, truncate_to_int(-2147483648.0f));
  EXPECT_EQ(INT32_MIN, truncate_to_int(-3e9f));
  EXPECT_EQ(INT32_MAX, truncate_to_int(std::numeric_limits<float>::infinity()));
  EXPECT_EQ(INT32_MIN, truncate_to_int(-std::numeric_limits<float>::infinity()));
}

TEST(TruncateToInt, CountsNanAsZero) { EXPECT_EQ(0, truncate_to_int(std::nanf(""))); }

}  // namespace
}  // namespace biseam::test
