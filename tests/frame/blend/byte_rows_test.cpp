#include "frame/blend/byte_rows.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "stages/image/border.hpp"
#include "support/guarded_block.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

// Random bytes, or the ends of their range only.
template <class Sample>
std::vector<Sample> samples(RandomSource& random, int count, int most) {
  std::vector<Sample> row(static_cast<size_t>(count));
  const int kind = random.between(0, 3);  // any, ends, lowest, highest
  for (Sample& sample : row) {
    sample = static_cast<Sample>(kind == 0   ? random.between(0, most)
                                 : kind == 1 ? most * random.between(0, 1)
                                             : most * (kind - 2));
  }
  return row;
}

TEST(SumByteRows, EveryCountUpToTheLargestSum) {
  RandomSource random;
  for (int count = 0; count < 200; ++count) {
    std::vector<uint8_t> rows[5];
    const uint8_t* pointers[5];
    for (int k = 0; k < 5; ++k) {
      rows[k] = samples<uint8_t>(random, count, 255);
      pointers[k] = rows[k].data();
    }
    GuardedBlock<uint16_t> out(static_cast<size_t>(count));
    kSumByteRows.best()(pointers, out.data(), count);
    for (int i = 0; i < count; ++i) {
      const size_t n = static_cast<size_t>(i);
      ASSERT_EQ(rows[0][n] + 4 * rows[1][n] + 6 * rows[2][n] + 4 * rows[3][n] + rows[4][n], out[n]);
    }
  }
}

TEST(ReduceByteRow, EveryWidthUpToTheLargestSum) {
  RandomSource random;
  for (int round = 0; round < 1200; ++round) {
    const int width = round / 4 + 1, half = (width + 1) / 2;
    const std::vector<uint16_t> sums = samples<uint16_t>(random, 3 * width, 16 * 255);
    GuardedBlock<uint8_t> out(static_cast<size_t>(3 * half));
    reduce_byte_row(sums.data(), out.data(), RowEdges(width));
    for (int x = 0; x < half; ++x) {
      for (int k = 0; k < 3; ++k) {
        const auto at = [&](int column) { return int{sums[static_cast<size_t>(3 * reflected(column, width) + k)]}; };
        const int sum = at(2 * x - 2) + 4 * at(2 * x - 1) + 6 * at(2 * x) + 4 * at(2 * x + 1) + at(2 * x + 2);
        ASSERT_EQ((sum + 128) / 256, out[static_cast<size_t>(3 * x + k)]) << "pixel " << x << " of " << width;
      }
    }
  }
}

TEST(ExpandByteRow, EveryWidthAndNoSampleFurther) {
  RandomSource random;
  for (int round = 0; round < 600; ++round) {
    const int width = round / 4 + 1;
    const std::vector<uint8_t> src = samples<uint8_t>(random, 3 * width, 255);
    GuardedBlock<uint16_t> out(static_cast<size_t>(6 * width));
    expand_byte_row(src.data(), out.data(), width);
    for (int x = 0; x < width; ++x) {
      for (int k = 0; k < 3; ++k) {
        const auto at = [&](int column) { return int{src[static_cast<size_t>(3 * column + k)]}; };
        const int before = at(width == 1 ? 0 : x == 0 ? 1 : x - 1), after = at(std::min(x + 1, width - 1));
        ASSERT_EQ(before + 6 * at(x) + after, out[static_cast<size_t>(6 * x + k)]) << "pixel " << x << " of " << width;
        ASSERT_EQ(4 * (at(x) + after), out[static_cast<size_t>(6 * x + 3 + k)]) << "pixel " << x << " of " << width;
      }
    }
  }
}

}  // namespace
}  // namespace biseam::test
