#include "base/truncate.hpp"

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

TEST(TruncateToUnsigned, CutsTheFraction) {
  EXPECT_EQ(truncate_to_unsigned(0.99999994f), 0u);
  EXPECT_EQ(truncate_to_unsigned(1.0f), 1u);
  EXPECT_EQ(truncate_to_unsigned(1919.75f), 1919u);
}

TEST(TruncateToUnsigned, NegativeValuesAndNanGiveZero) {
  EXPECT_EQ(truncate_to_unsigned(-0.0f), 0u);
  EXPECT_EQ(truncate_to_unsigned(-0.5f), 0u);
  EXPECT_EQ(truncate_to_unsigned(-1e30f), 0u);
  EXPECT_EQ(truncate_to_unsigned(-std::numeric_limits<float>::infinity()), 0u);
  EXPECT_EQ(truncate_to_unsigned(std::numeric_limits<float>::quiet_NaN()), 0u);
}

TEST(TruncateToUnsigned, LargeValuesGiveTheLargest) {
  EXPECT_EQ(truncate_to_unsigned(4294967040.0f), 4294967040u);  // the last float inside
  EXPECT_EQ(truncate_to_unsigned(4294967296.0f), 0xFFFFFFFFu);
  EXPECT_EQ(truncate_to_unsigned(std::numeric_limits<float>::infinity()), 0xFFFFFFFFu);
}

}  // namespace
}  // namespace biseam::test
