#include "stages/lens/trig.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "biseam/biseam.h"
#include "stages/lens/plain_lens.hpp"
#include "support/guarded.hpp"

namespace biseam::test {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();

TEST(ArctangentTable, HoldsTheLibrarysArctangentsRounded) {
  for (int i = 0; i < 256; ++i) EXPECT_EQ(kArctangents.values[i], static_cast<float>(std::atan(i / 255.0))) << i;
}

TEST(ArctangentTable, EndsWithQuarterPiTwice) {
  EXPECT_EQ(std::size(kArctangents.values), 257u);
  EXPECT_EQ(kArctangents.values[255], 0.78539816f);
  EXPECT_EQ(kArctangents.values[256], kArctangents.values[255]);
}

TEST(FastAtan2, OriginIsZero) {
  EXPECT_EQ(fast_atan2(0.0f, 0.0f), 0.0f);
  EXPECT_EQ(fast_atan2(-0.0f, -0.0f), 0.0f);
  EXPECT_FALSE(std::signbit(fast_atan2(-0.0f, 0.0f)));
}

TEST(FastAtan2, DiagonalIsExactlyQuarterPi) {
  EXPECT_EQ(fast_atan2(1.0f, 1.0f), 0.78539816f);
  EXPECT_EQ(fast_atan2(-1.0f, 1.0f), -0.78539816f);
  EXPECT_EQ(fast_atan2(3.5f, 3.5f), 0.78539816f);
}

TEST(FastAtan2, ZeroHeightCountsAsNonNegative) {
  EXPECT_EQ(fast_atan2(0.0f, -1.0f), 3.1415927f);
  EXPECT_EQ(fast_atan2(-0.0f, -1.0f), 3.1415927f);
}

TEST(FastAtan2, StraightDownIsMinusHalfPi) {
  EXPECT_EQ(fast_atan2(-1.0f, 0.0f), -1.5707964f);
  EXPECT_EQ(fast_atan2(-1.0f, -0.0f), -1.5707964f);
}

TEST(FastAtan2, RatioJustBelowTheTablesStepIsItsOwnAngle) {
  const float limit = 0.003921569f;  // as a float it lies on one side of the double: take neighbours on both
  const float below = std::nextafter(limit, 0.0f);
  ASSERT_LT(static_cast<double>(below), 0.003921569);
  EXPECT_EQ(fast_atan2(below, 1.0f), below);
}

TEST(FastAtan2, RatioJustAboveTheTablesStepInterpolatesEntryZero) {
  float above = 0.003921569f;
  while (static_cast<double>(above) < 0.003921569) above = std::nextafter(above, 1.0f);
  const float fraction = above * 256.0f - 0.5f;
  EXPECT_NEAR(fraction, 0.504, 0.001);
  EXPECT_EQ(fast_atan2(above, 1.0f), static_cast<float>(std::atan(1 / 255.0)) * fraction);
}

// Entry i is the angle of i / 255, but the index counts 256ths less a half: angles are off by up to 0.5 / 255.
TEST(FastAtan2, IndexCountsIn256thsThoughTheTableStepsIn255ths) {
  EXPECT_EQ(fast_atan2(100.5f, 256.0f), kArctangents.values[100]);
  EXPECT_EQ(fast_atan2(10.5f, 256.0f), kArctangents.values[10]);
  EXPECT_NEAR(fast_atan2(10.5f, 256.0f) - std::atan(10.5 / 256.0), -0.0018, 0.0001);
}

TEST(FastAtan2, InfiniteRatioIsARightAngle) {
  EXPECT_EQ(fast_atan2(kInfinity, 1.0f), 1.5707964f);
  EXPECT_EQ(fast_atan2(-kInfinity, 1.0f), -1.5707964f);
}

TEST(FastAtan2, NotANumberStaysOne) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  EXPECT_TRUE(std::isnan(fast_atan2(nan, 1.0f)));
  EXPECT_TRUE(std::isnan(fast_atan2(1.0f, nan)));
  EXPECT_TRUE(std::isnan(fast_atan2(kInfinity, kInfinity)));
}

TEST(FastAtan2, EqualsThePlainFormula) {
  const unsigned seed = 20401;
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  Random random(seed);
  for (int i = 0; i < 200000; ++i) {
    const float y = pick(random, -4.0f, 4.0f), x = pick(random, -4.0f, 4.0f) * (i % 7 == 0 ? 1e-3f : 1.0f);
    ASSERT_EQ(fast_atan2(y, x), plain_arctangent(y, x)) << y << ", " << x;
    ASSERT_EQ(my_atan(x, y), plain_arctangent(y, x)) << y << ", " << x;
  }
}

TEST(MyAtan, SwapsItsArguments) { EXPECT_EQ(my_atan(-1.0f, 0.0f), 3.1415927f); }

TEST(MyPow, Squares) {
  EXPECT_EQ(my_pow(3.0f), 9.0f);
  EXPECT_EQ(my_pow(-0.1f), 0.1f * 0.1f);
}

TEST(MySqrt, FourIsAboutTwo) {
  const float root = my_sqrt(4.0f);
  EXPECT_NE(root, 2.0f);
  EXPECT_NEAR(root, 2.0, 2e-5);
}

TEST(MySqrt, ZeroIsZero) { EXPECT_EQ(my_sqrt(0.0f), 0.0f); }

TEST(MySqrt, TwoNewtonStepsFromTheBitEstimate) {
  const unsigned seed = 20402;
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  Random random(seed);
  for (int i = 0; i < 10000; ++i) {
    const float x = pick(random, 0.0f, 1e6f);
    int32_t bits;
    std::memcpy(&bits, &x, 4);
    bits = 1597463007 - (bits >> 1);
    float y;
    std::memcpy(&y, &bits, 4);
    const float h = 0.5f * x;
    y = y * (1.5f - h * y * y);
    y = y * (1.5f - h * y * y);
    ASSERT_EQ(my_sqrt(x), y * x) << x;
    ASSERT_NEAR(my_sqrt(x), std::sqrt(x), 1e-5 * std::sqrt(x)) << x;
  }
}

TEST(MySqrt, NegativeInputIsNotGuarded) { EXPECT_EQ(my_sqrt(-1.0f), -kInfinity); }

TEST(MySin, PiTakesTheShiftedBranch) {
  const double pi = 3.141592653589793;
  EXPECT_EQ(my_sin(pi), -mx_sin(pi - 3.14159265));
  EXPECT_LT(my_sin(pi), 0.0);
  EXPECT_GT(my_sin(pi), -1e-8);
  EXPECT_EQ(my_sin(3.14159265), 0.0);
}

TEST(MyCos, WrapsPastTwoPi) {
  const double x = 3 * 3.141592653589793 / 2 + 0.1;
  EXPECT_EQ(my_cos(x), mx_sin(x + 1.570796325 - 6.2831853));
  EXPECT_NEAR(my_cos(x), std::cos(x), 0.0012);
}

TEST(MySin, EqualsThePlainFormula) {
  for (double x = -3.14159265; x < 6.2831853; x += 0.000171) {
    ASSERT_EQ(my_sin(x), plain_sine(x)) << x;
    ASSERT_NEAR(my_sin(x), std::sin(x), 0.0012) << x;
  }
}

TEST(MyCos, EqualsThePlainFormula) {
  for (double x = -4.71; x < 4.8; x += 0.000171) {
    ASSERT_EQ(my_cos(x), plain_cosine(x)) << x;
    ASSERT_NEAR(my_cos(x), std::cos(x), 0.0012) << x;
  }
}

TEST(MxSin, IsOddAndPeaksNearOne) {
  for (double x = 0.0; x < 3.1415; x += 0.01) EXPECT_EQ(mx_sin(-x), -mx_sin(x)) << x;
  EXPECT_NEAR(mx_sin(1.5707963), 1.0, 1e-7);  // the rounded constants keep it from exactly 1
}

}  // namespace
}  // namespace biseam::test
