#include "stages/image/border.hpp"

#include <gtest/gtest.h>

#include <cstdint>

#include "biseam/biseam.h"
#include "support/pyramid_formulas.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

constexpr int32_t kUntouched = 12345;

int32_t interpolate(int32_t p, int32_t len, int32_t type) {
  int32_t out = kUntouched;
  EXPECT_EQ(0, BorderInterpolate(&out, p, len, type));
  return out;
}

TEST(BorderInterpolate, KeepsCoordinatesInside) {
  for (int type : {0, 1, 4, -1}) {
    for (int p = 0; p < 7; ++p) EXPECT_EQ(p, interpolate(p, 7, type));
  }
}

TEST(BorderInterpolate, MirrorsWithoutRepeatingTheEdge) {
  EXPECT_EQ(1, interpolate(-1, 9, 4));
  EXPECT_EQ(2, interpolate(-2, 9, 4));
  EXPECT_EQ(7, interpolate(9, 9, 4));
  EXPECT_EQ(6, interpolate(10, 9, 4));
}

TEST(BorderInterpolate, OtherRulesGiveTheCoordinateItself) {
  for (int type : {0, 1, 2, 3, 5, -4}) {
    EXPECT_EQ(-3, interpolate(-3, 9, type));
    EXPECT_EQ(14, interpolate(14, 9, type));
    EXPECT_EQ(-3, interpolate(-3, 1, type));
    EXPECT_EQ(0, interpolate(0, 0, type));
  }
}

TEST(BorderInterpolate, LengthOneLeavesTheVariableAlone) {
  for (int p : {-2, -1, 1, 2, 100}) EXPECT_EQ(kUntouched, interpolate(p, 1, 4));
  EXPECT_EQ(0, interpolate(0, 1, 4));
}

TEST(BorderInterpolate, LengthZeroEndsAndLeavesTheVariableAlone) {
  for (int p : {-1, 0, 1}) EXPECT_EQ(kUntouched, interpolate(p, 0, 4));
}

TEST(BorderInterpolate, MirrorsAsOftenAsItTakes) {
  for (int len = 2; len < 12; ++len) {
    for (int p = -60; p < 60; ++p) EXPECT_EQ(mirrored(p, len), interpolate(p, len, 4)) << p << " of " << len;
  }
}

TEST(BorderInterpolate, EndsForTheFarthestCoordinates) {
  EXPECT_EQ(0, interpolate(INT32_MIN, 2, 4));
  EXPECT_EQ(1, interpolate(INT32_MAX, 2, 4));
  const int32_t inside = interpolate(INT32_MIN, 1000003, 4);
  EXPECT_GE(inside, 0);
  EXPECT_LT(inside, 1000003);
}

TEST(Reflected, LoneSampleStandsForAllCoordinates) {
  for (int p : {-2, -1, 0, 1, 2}) EXPECT_EQ(0, reflected(p, 1));
}

}  // namespace
}  // namespace biseam::test
