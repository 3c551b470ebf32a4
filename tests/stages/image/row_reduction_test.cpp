#include "stages/image/row_reduction.hpp"

#include <gtest/gtest.h>

#include <cstdint>

#include "support/random_source.hpp"

namespace biseam::test {
namespace {

TEST(BinomialSum, WeighsTheMiddleMostAndWraps) {
  EXPECT_EQ(1, binomial_sum(1, 0, 0, 0, 0));
  EXPECT_EQ(4, binomial_sum(0, 1, 0, 0, 0));
  EXPECT_EQ(6, binomial_sum(0, 0, 1, 0, 0));
  EXPECT_EQ(4, binomial_sum(0, 0, 0, 1, 0));
  EXPECT_EQ(1, binomial_sum(0, 0, 0, 0, 1));
  RandomSource random;
  for (int round = 0; round < 100; ++round) {
    int32_t s[5];
    for (int32_t& sample : s) sample = static_cast<int32_t>(random.word());
    const int64_t sum = int64_t{s[0]} + int64_t{4} * s[1] + int64_t{6} * s[2] + int64_t{4} * s[3] + s[4];
    EXPECT_EQ(static_cast<int32_t>(sum), binomial_sum(s[0], s[1], s[2], s[3], s[4]));
  }
}

TEST(ReducedFromSum, NegativeSumsRoundTowardMinusInfinity) {
  for (const auto& [sum, expected] : {std::pair{-129, -1}, {-128, 0}, {-1, 0}, {127, 0}, {128, 1}, {-385, -2}, {-384, -1}}) {
    EXPECT_EQ(expected, reduced_from_sum(sum)) << sum;
  }
}

TEST(FindInnerEnd, IsTheFirstColumnWhoseFiveSourceColumnsLeaveTheRow) {
  for (int src_width = 3; src_width < 20; ++src_width) {
    const int dst_width = (src_width + 1) / 2;
    int end = 1;
    while (end < dst_width && 2 * end + 2 < src_width) ++end;
    EXPECT_EQ(end, find_inner_end(src_width, dst_width)) << src_width;
  }
}

TEST(MiddleColumn, IsTheDoubleUpToAnExactHalfAndTheLastColumnPastIt) {
  for (int src_width = 4; src_width < 20; src_width += 2) {
    const int inner_end = find_inner_end(src_width, src_width / 2 + 1);
    for (int x = 0; x < src_width / 2; ++x) EXPECT_EQ(2 * x, middle_column(x, inner_end));
    EXPECT_EQ(src_width - 1, middle_column(src_width / 2, inner_end));
  }
}

}  // namespace
}  // namespace biseam::test
