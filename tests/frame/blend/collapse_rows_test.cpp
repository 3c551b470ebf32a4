#include "frame/blend/collapse_rows.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "support/guarded_block.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

struct Rows {
  // Three expanded rows of three images, then the rows of the level itself: source 1, source 2, mask.
  Rows(RandomSource& random, int count) : samples(12, std::vector<int32_t>(count)) {
    for (std::vector<int32_t>& row : samples) {
      for (int32_t& sample : row) sample = static_cast<int32_t>(random.word());
    }
  }
  ExpandedRows expanded(int image) const {
    return {samples[3 * image].data(), samples[3 * image + 1].data(), samples[3 * image + 2].data()};
  }
  CollapseRows all() const {
    return {expanded(0), expanded(1), expanded(2), samples[9].data(), samples[10].data(), samples[11].data()};
  }
  uint32_t at(int row, int i) const { return static_cast<uint32_t>(samples[row][i]); }

  std::vector<std::vector<int32_t>> samples;
};

uint32_t rounded(uint32_t sum) { return static_cast<uint32_t>(static_cast<int32_t>(sum + 32) >> 6); }

TEST(CollapseRow, EveryCountAndFullRangeSamples) {
  RandomSource random;
  for (int count = 0; count < 50; ++count) {
    const Rows rows(random, count);
    GuardedBlock<int32_t> on(count), between(count);
    collapse_row_on(rows.all(), on.data(), count);
    collapse_row_between(rows.all(), between.data(), count);
    for (int i = 0; i < count; ++i) {
      uint32_t up_on[3], up_between[3];
      for (int k = 0; k < 3; ++k) {
        up_on[k] = rounded(rows.at(3 * k, i) + 6 * rows.at(3 * k + 1, i) + rows.at(3 * k + 2, i));
        up_between[k] = rounded(4 * rows.at(3 * k + 1, i) + 4 * rows.at(3 * k + 2, i));
      }
      const uint32_t mask = rows.at(11, i);
      const auto collapsed = [&](const uint32_t up[3]) {
        return static_cast<int32_t>(up[0] + (rows.at(9, i) - up[1]) * mask + (rows.at(10, i) - up[2]) * (64 - mask));
      };
      ASSERT_EQ(collapsed(up_on), on[i]);
      ASSERT_EQ(collapsed(up_between), between[i]);
    }
  }
}

TEST(CollapseRow, WeightOf64TakesSource1Alone) {
  // Constant images: the expanded rows hold eight times the sample.
  const int32_t blended = 8 * 640, first = 8 * 10, second = 8 * 20, level1 = 13, level2 = 27, all = 64, none = 0;
  const ExpandedRows b{&blended, &blended, &blended}, s1{&first, &first, &first}, s2{&second, &second, &second};
  int32_t out = 0;
  collapse_row_on({b, s1, s2, &level1, &level2, &all}, &out, 1);
  EXPECT_EQ(640 + 3 * 64, out);
  collapse_row_between({b, s1, s2, &level1, &level2, &none}, &out, 1);
  EXPECT_EQ(640 + 7 * 64, out);
}

}  // namespace
}  // namespace biseam::test
