#include "stages/image/pyr_up_rows.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "support/guarded_block.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

TEST(ExpandRow, EdgesAreNotEachOthersMirror) {
  const std::vector<int32_t> source{3, 5, 11};
  GuardedBlock<int32_t> row(6);
  expand_row(source.data(), row.data(), 3, 1);
  const std::vector<int32_t> expected{6 * 3 + 2 * 5, 4 * (3 + 5), 3 + 6 * 5 + 11, 4 * (5 + 11), 5 + 7 * 11, 8 * 11};
  EXPECT_EQ(expected, row.values());
}

TEST(ExpandRow, LonePixelGivesEightTimesItselfTwice) {
  const std::vector<int32_t> source{7, -2, 1};
  GuardedBlock<int32_t> row(6);
  expand_row(source.data(), row.data(), 1, 3);
  EXPECT_EQ((std::vector<int32_t>{56, -16, 8, 56, -16, 8}), row.values());
}

TEST(ExpandRow, EveryWidthAndChannelCountAndFullRangeSamples) {
  RandomSource random;
  for (int channels = 1; channels < 6; ++channels) {
    for (int width = 1; width < 20; ++width) {
      std::vector<int32_t> source(width * channels);
      for (int32_t& sample : source) sample = static_cast<int32_t>(random.word());
      GuardedBlock<int32_t> row(2 * width * channels);
      expand_row(source.data(), row.data(), width, channels);
      for (int i = 0; i < width; ++i) {
        for (int k = 0; k < channels; ++k) {
          const auto at = [&](int column) { return static_cast<uint32_t>(source[column * channels + k]); };
          const uint32_t after = i == width - 1 ? at(i) : at(i + 1);
          const uint32_t before = i > 0 ? at(i - 1) : after;
          EXPECT_EQ(static_cast<int32_t>(before + 6 * at(i) + after), row[2 * i * channels + k]);
          EXPECT_EQ(static_cast<int32_t>(4 * at(i) + 4 * after), row[(2 * i + 1) * channels + k]);
        }
      }
    }
  }
}

TEST(ExpandRowsOn, NegativeSumsRoundTowardMinusInfinity) {
  for (const auto& [sum, expected] : {std::pair{-33, -1}, {-32, 0}, {31, 0}, {32, 1}, {-97, -2}, {-96, -1}}) {
    const int32_t above = sum, zero = 0;
    GuardedBlock<int32_t> out(1);
    expand_rows_on(&above, &zero, &zero, out.data(), 1);
    EXPECT_EQ(expected, out[0]) << sum;
  }
}

TEST(ExpandRowsBetween, NegativeSumsRoundTowardMinusInfinity) {
  for (const auto& [sample, expected] : {std::pair{-9, -1}, {-8, 0}, {7, 0}, {8, 1}}) {
    const int32_t row = sample, zero = 0;
    GuardedBlock<int32_t> out(1);
    expand_rows_between(&row, &zero, out.data(), 1);
    EXPECT_EQ(expected, out[0]) << sample;
  }
}

TEST(ExpandRows, EveryCountAndFullRangeSamples) {
  RandomSource random;
  for (int count = 0; count < 40; ++count) {
    std::vector<int32_t> above(count), row(count), below(count);
    for (std::vector<int32_t>* samples : {&above, &row, &below}) {
      for (int32_t& sample : *samples) sample = static_cast<int32_t>(random.word());
    }
    GuardedBlock<int32_t> on(count), between(count);
    expand_rows_on(above.data(), row.data(), below.data(), on.data(), count);
    expand_rows_between(row.data(), below.data(), between.data(), count);
    for (int i = 0; i < count; ++i) {
      const uint32_t a = static_cast<uint32_t>(above[i]), r = static_cast<uint32_t>(row[i]),
                     b = static_cast<uint32_t>(below[i]);
      EXPECT_EQ(static_cast<int32_t>(a + 6 * r + b + 32) >> 6, on[i]);
      EXPECT_EQ(static_cast<int32_t>((r + b) * 4 + 32) >> 6, between[i]);
    }
  }
}

}  // namespace
}  // namespace biseam::test
