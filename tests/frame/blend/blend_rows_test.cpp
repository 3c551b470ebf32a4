#include "frame/blend/blend_rows.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "support/guarded_block.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

constexpr int kMostExpanded = 8 * 255;

template <class Sample>
std::vector<Sample> samples(RandomSource& random, int count, int most) {
  std::vector<Sample> row(static_cast<size_t>(count));
  const bool ends = random.between(0, 1) != 0;
  for (Sample& sample : row) sample = static_cast<Sample>(ends ? most * random.between(0, 1) : random.between(0, most));
  return row;
}

struct Rows {
  Rows(RandomSource& random, int count) {
    for (std::vector<int32_t>& row : blended) {
      for (int i = 0; i < count; ++i) row.push_back(static_cast<int32_t>(random.word()));
    }
    for (std::vector<uint16_t>& row : expanded) row = samples<uint16_t>(random, count, kMostExpanded);
    for (std::vector<uint8_t>& row : levels) row = samples<uint8_t>(random, count, 255);
    mask = samples<uint8_t>(random, count, 64);
  }
  CollapseRows all() const {
    return {{blended[0].data(), blended[1].data(), blended[2].data()},
            {expanded[0].data(), expanded[1].data(), expanded[2].data()},
            {expanded[3].data(), expanded[4].data(), expanded[5].data()},
            levels[0].data(),
            levels[1].data(),
            mask.data()};
  }
  // For the given weights of the row above, the row itself and the one below.
  int32_t collapsed(size_t i, int64_t above, int64_t row, int64_t below) const {
    const uint32_t sum = static_cast<uint32_t>(above * blended[0][i] + row * blended[1][i] + below * blended[2][i] + 32);
    const auto up = [&](int first) {
      return (above * expanded[first][i] + row * expanded[first + 1][i] + below * expanded[first + 2][i] + 32) / 64;
    };
    const int64_t detail = (levels[0][i] - up(0)) * mask[i] + (levels[1][i] - up(3)) * (64 - mask[i]);
    return static_cast<int32_t>(static_cast<uint32_t>(static_cast<int32_t>(sum) >> 6) + static_cast<uint32_t>(detail));
  }

  std::vector<int32_t> blended[3];
  std::vector<uint16_t> expanded[6];
  std::vector<uint8_t> levels[2], mask;
};

TEST(CollapseRow, EveryCountAndTheEndsOfTheRanges) {
  RandomSource random;
  for (int round = 0; round < 600; ++round) {
    const int count = round / 4;
    const Rows rows(random, count);
    GuardedBlock<int32_t> on(static_cast<size_t>(count)), between(static_cast<size_t>(count));
    kCollapseRowOn.best()(rows.all(), on.data(), count);
    kCollapseRowBetween.best()(rows.all(), between.data(), count);
    for (size_t i = 0; i < static_cast<size_t>(count); ++i) {
      ASSERT_EQ(rows.collapsed(i, 1, 6, 1), on[i]);
      ASSERT_EQ(rows.collapsed(i, 0, 4, 4), between[i]);
    }
  }
}

TEST(NarrowRow, BytesStayAndTheLargestIsKept) {
  RandomSource random;
  for (int count = 0; count < 150; ++count) {
    const std::vector<int32_t> row = samples<int32_t>(random, count, 255);
    const uint32_t before = static_cast<uint32_t>(random.between(0, 300));
    uint32_t largest = before;
    GuardedBlock<uint8_t> out(static_cast<size_t>(count));
    kNarrowRow.best()(row.data(), out.data(), count, largest);
    EXPECT_TRUE(std::equal(row.begin(), row.end(), out.data()));
    const int32_t most = row.empty() ? 0 : *std::max_element(row.begin(), row.end());
    EXPECT_EQ(std::max(before, static_cast<uint32_t>(most)), largest);
  }
}

TEST(NarrowRow, OneSampleOutOfRangeIsFoundWhereverItLies) {
  for (const int32_t outlier : {256, 65536, -1, -256, INT32_MIN, INT32_MAX}) {
    for (size_t at = 0; at < 150; ++at) {
      std::vector<int32_t> row(150, 255);
      row[at] = outlier;
      uint32_t largest = 0;
      GuardedBlock<uint8_t> out(row.size());
      kNarrowRow.best()(row.data(), out.data(), static_cast<ptrdiff_t>(row.size()), largest);
      ASSERT_EQ(static_cast<uint32_t>(outlier), largest);
    }
  }
}

TEST(MirrorBytePixels, EveryCount) {
  RandomSource random;
  for (int count = 1; count < 100; ++count) {
    const std::vector<uint8_t> pixels = samples<uint8_t>(random, 3 * count, 255);
    GuardedBlock<uint8_t> out(pixels.size());
    kMirrorBytePixels.best()(pixels.data() + pixels.size() - 3, out.data(), count);
    for (size_t i = 0; i < pixels.size(); ++i) ASSERT_EQ(pixels[pixels.size() - 3 - i / 3 * 3 + i % 3], out[i]);
  }
}

TEST(MixByteRow, WeightsAddUpTo64) {
  RandomSource random;
  for (int count = 0; count < 150; ++count) {
    const std::vector<uint8_t> a = samples<uint8_t>(random, count, 255), b = samples<uint8_t>(random, count, 255);
    const std::vector<uint8_t> mask = samples<uint8_t>(random, count, 64);
    GuardedBlock<int32_t> out(static_cast<size_t>(count));
    kMixByteRow.best()(a.data(), b.data(), mask.data(), out.data(), count);
    for (size_t i = 0; i < a.size(); ++i) ASSERT_EQ(a[i] * mask[i] + b[i] * (64 - mask[i]), out[i]);
  }
}

}  // namespace
}  // namespace biseam::test
