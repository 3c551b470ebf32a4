#include "stages/image/pyr_down_rows.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "support/guarded_block.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

uint32_t weighted(const int32_t s[5]) {
  static constexpr uint32_t weights[5] = {1, 4, 6, 4, 1};
  uint32_t sum = 0;
  for (int i = 0; i < 5; ++i) sum += weights[i] * static_cast<uint32_t>(s[i]);
  return sum;
}

TEST(ReducePixels, EveryCountAndFullRangeSamples) {
  RandomSource random;
  for (int pixels = 0; pixels < 20; ++pixels) {
    // Exactly the source that the contract names: two pixels before the first, two past the last.
    std::vector<int32_t> source(pixels == 0 ? 0 : 3 * (2 * (pixels - 1) + 5));
    for (int32_t& sample : source) sample = static_cast<int32_t>(random.word());
    GuardedBlock<int32_t> row(3 * pixels), rounded(3 * pixels);
    if (pixels > 0) reduce_pixels(source.data() + 6, row.data(), pixels);
    if (pixels > 0) reduce_pixels_rounded(source.data() + 6, rounded.data(), pixels);
    for (int x = 0; x < pixels; ++x) {
      for (int k = 0; k < 3; ++k) {
        int32_t taps[5];
        for (int i = 0; i < 5; ++i) taps[i] = source[3 * (2 * x + i) + k];
        EXPECT_EQ(static_cast<int32_t>(weighted(taps)), row[3 * x + k]);
        EXPECT_EQ(static_cast<int32_t>(weighted(taps) + 128) >> 8, rounded[3 * x + k]);
      }
    }
  }
}

TEST(ReducePixels, NegativeCountWritesNothing) {
  GuardedBlock<int32_t> row(3);
  const std::vector<int32_t> before = row.values();
  const std::vector<int32_t> source(15);
  reduce_pixels(source.data() + 6, row.data(), -1);
  reduce_pixels_rounded(source.data() + 6, row.data(), -1);
  EXPECT_EQ(before, row.values());
}

TEST(ReducePixelAt, TakesTheFiveNamedColumns) {
  const std::vector<int32_t> source{1, 10, 100, 2, 20, 200, 3, 30, 300};
  const int32_t columns[5] = {2, 1, 0, 1, 2};
  GuardedBlock<int32_t> row(3);
  reduce_pixel_at(source.data(), columns, row.data());
  EXPECT_EQ(6 * 1 + 8 * 2 + 2 * 3, row[0]);
  EXPECT_EQ(60 + 160 + 60, row[1]);
  EXPECT_EQ(600 + 1600 + 600, row[2]);
}

TEST(ReduceRows, NegativeSumsRoundTowardMinusInfinity) {
  // Weight 1 sits on the first row: the sum is that sample.
  for (const auto& [sum, expected] : {std::pair{-129, -1}, {-128, 0}, {-1, 0}, {127, 0}, {128, 1}, {-385, -2}, {-384, -1}}) {
    const int32_t samples[5] = {sum, 0, 0, 0, 0};
    const int32_t* rows[5];
    for (int k = 0; k < 5; ++k) rows[k] = &samples[k];
    GuardedBlock<int32_t> out(1);
    reduce_rows(rows, out.data(), 1);
    EXPECT_EQ(expected, out[0]) << sum;
  }
}

TEST(ReduceRows, EveryCountAndFullRangeSamples) {
  RandomSource random;
  for (int count = 0; count < 40; ++count) {
    std::vector<std::vector<int32_t>> samples(5, std::vector<int32_t>(count));
    const int32_t* rows[5];
    for (int k = 0; k < 5; ++k) {
      for (int32_t& sample : samples[k]) sample = static_cast<int32_t>(random.word());
      rows[k] = samples[k].data();
    }
    GuardedBlock<int32_t> out(count), sums(count);
    reduce_rows(rows, out.data(), count);
    sum_rows(rows, sums.data(), count);
    for (int i = 0; i < count; ++i) {
      const int32_t taps[5] = {samples[0][i], samples[1][i], samples[2][i], samples[3][i], samples[4][i]};
      EXPECT_EQ(static_cast<int32_t>(weighted(taps) + 128) >> 8, out[i]);
      EXPECT_EQ(static_cast<int32_t>(weighted(taps)), sums[i]);
    }
  }
}

}  // namespace
}  // namespace biseam::test
