#include "geometry/truncate.hpp"

#include <gtest/gtest.h>

#include <limits>

namespace biseam::test {
namespace {

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
