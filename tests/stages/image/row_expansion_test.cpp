#include "stages/image/row_expansion.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "support/pyramid_formulas.hpp"

namespace biseam::test {
namespace {

TEST(ExpansionSums, WrapAt32BitsAndHoldAllSumsOfBytesIn16) {
  EXPECT_EQ(8u * INT32_MAX, sum_on(INT32_MAX, INT32_MAX, INT32_MAX));
  EXPECT_EQ(8u * INT32_MAX, sum_between(INT32_MAX, INT32_MAX));
  // Twice: a row of bytes, then a column of such sums.
  const uint16_t across = sum_on<uint16_t, uint8_t>(255, 255, 255), between = sum_between<uint16_t, uint8_t>(255, 255);
  EXPECT_EQ(8 * 255, across);
  EXPECT_EQ(8 * 255, between);
  EXPECT_EQ(64 * 255, (sum_on<uint16_t, uint16_t>(across, across, across)));
  EXPECT_EQ(64 * 255, (sum_between<uint16_t, uint16_t>(across, across)));
}

TEST(ExpandedFromSum, NegativeSumsRoundTowardMinusInfinity) {
  for (const auto& [sum, expected] : {std::pair{-33, -1}, {-32, 0}, {31, 0}, {32, 1}, {-97, -2}, {-96, -1}}) {
    EXPECT_EQ(expected, expanded_from_sum(static_cast<uint32_t>(sum))) << sum;
  }
}

TEST(ExpandedFromSum, Of16BitsIsThatOf32) {
  for (int sum = 0; sum <= 64 * 255; ++sum) {
    ASSERT_EQ(expanded_from_sum(static_cast<uint32_t>(sum)), expanded_from_sum(static_cast<uint16_t>(sum)));
  }
}

TEST(ExpandOuterPixels, EdgesAreNotEachOthersMirror) {
  const int32_t source[4] = {3, 5, 7, 11};
  std::vector<int32_t> row(8, -1);
  expand_outer_pixels(source, row.data(), 4, 1);
  EXPECT_EQ((std::vector<int32_t>{6 * 3 + 2 * 5, 4 * (3 + 5), -1, -1, -1, -1, 7 + 7 * 11, 8 * 11}), row);
}

TEST(ExpandOuterPixels, LonePixelGivesEightTimesItselfTwice) {
  const uint8_t source[3] = {7, 2, 255};
  uint16_t row[6] = {};
  expand_outer_pixels(source, row, 1, 3);
  EXPECT_EQ((std::vector<uint16_t>{56, 16, 2040, 56, 16, 2040}), std::vector<uint16_t>(row, row + 6));
}

TEST(ExpandedSourceRow, MirrorsTheDestinationsRows) {
  for (int height = 2; height < 9; ++height) {
    for (const int dst_height : {2 * height, 2 * height - 1}) {
      for (int y = -1; y <= height; ++y) {
        EXPECT_EQ(expanded_row(y, height, dst_height), expanded_source_row(y, height, dst_height)) << y << " of " << height;
      }
    }
  }
}

}  // namespace
}  // namespace biseam::test
