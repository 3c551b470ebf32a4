#include "frame/blend/expand_row.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "support/guarded_block.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

TEST(ExpandRow, LonePixelGivesEightTimesItselfTwice) {
  const std::vector<int32_t> source{7, -2, 1};
  GuardedBlock<int32_t> row(6);
  expand_row(source.data(), row.data(), 1);
  EXPECT_EQ((std::vector<int32_t>{56, -16, 8, 56, -16, 8}), row.values());
}

TEST(ExpandRow, NoPixelsWriteNothing) {
  GuardedBlock<int32_t> row(3);
  const std::vector<int32_t> before = row.values();
  for (const int width : {0, -1, -7}) expand_row(nullptr, row.data(), width);
  EXPECT_EQ(before, row.values());
}

TEST(ExpandRow, EveryWidthAndFullRangeSamples) {
  RandomSource random;
  for (int width = 1; width < 60; ++width) {
    std::vector<int32_t> source(3 * width);
    for (int32_t& sample : source) sample = static_cast<int32_t>(random.word());
    GuardedBlock<int32_t> row(6 * width);
    expand_row(source.data(), row.data(), width);
    for (int i = 0; i < width; ++i) {
      for (int k = 0; k < 3; ++k) {
        const auto at = [&](int column) { return static_cast<uint32_t>(source[3 * column + k]); };
        const uint32_t after = i == width - 1 ? at(i) : at(i + 1);
        const uint32_t before = i > 0 ? at(i - 1) : after;
        EXPECT_EQ(static_cast<int32_t>(before + 6 * at(i) + after), row[6 * i + k]);
        EXPECT_EQ(static_cast<int32_t>(4 * at(i) + 4 * after), row[6 * i + 3 + k]);
      }
    }
  }
}

}  // namespace
}  // namespace biseam::test
