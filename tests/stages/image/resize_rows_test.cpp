#include "stages/image/resize_rows.hpp"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <vector>

#include "base/truncate.hpp"
#include "biseam/biseam.h"
#include "support/guarded_block.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

ResizeEntry entry(int32_t offset, float weight) { return {offset, std::bit_cast<int32_t>(weight)}; }

// A walk over an image of one exact block, with guarded outputs.
struct Walk {
  Walk(int src_width_, int src_height_, int dst_width, int dst_height, int channels_)
      : src_width(src_width_),
        src_height(src_height_),
        channels(channels_),
        src(static_cast<size_t>(src_width_) * src_height_ * channels_),
        columns(static_cast<size_t>(dst_width) * channels_),
        rows(dst_height),
        dst(columns.size() * dst_height),
        row_a(columns.size()),
        row_b(columns.size()),
        xmax(dst_width) {}

  int32_t run() {
    const int dst_width = static_cast<int>(columns.size()) / channels;
    return Resize_Bilinear(src.data(), src_width * channels, src_width, src_height, dst.data(), dst_width * channels, dst_width,
                           static_cast<int32_t>(rows.size()), channels, xmax, columns.data(), rows.data(), row_a.data(),
                           row_b.data());
  }

  int src_width, src_height, channels;
  std::vector<int32_t> src;
  std::vector<ResizeEntry> columns, rows;
  GuardedBlock<int32_t> dst;
  GuardedBlock<float> row_a, row_b;
  int xmax;
};

TEST(WeightOf, IntegerWeightsReadAsSubnormalFloats) {
  for (int weight = 1; weight <= 1024; ++weight) {
    const float read = weight_of({0, weight});
    EXPECT_EQ(FP_SUBNORMAL, std::fpclassify(read));
    EXPECT_GT(read, 0.0f);
    EXPECT_LT(read, 1.5e-42f);
  }
  EXPECT_EQ(0.0f, weight_of({0, 0}));
}

TEST(ResizeBilinear, FloatWeightsInterpolateColumnsAndRows) {
  Walk walk(2, 2, 1, 1, 1);
  walk.src = {0, 100, 200, 400};
  walk.columns = {entry(0, 0.25f)};
  walk.rows = {entry(0, 0.5f)};
  EXPECT_EQ(0, walk.run());
  EXPECT_EQ(137, walk.dst[0]);  // 25 and 250, half way: 137.5
}

TEST(ResizeBilinear, ResultsRoundTowardZero) {
  Walk walk(2, 1, 2, 1, 1);
  walk.src = {-3, 0};
  walk.columns = {entry(0, 0.5f), entry(0, 0.9f)};
  walk.rows = {entry(0, 0.0f)};
  walk.run();
  EXPECT_EQ(-1, walk.dst[0]);
  EXPECT_EQ(0, walk.dst[1]);
}

TEST(ResizeBilinear, ResultsPastTheRangeSaturate) {
  Walk walk(2, 1, 2, 1, 1);
  walk.src = {INT32_MIN, INT32_MAX};
  walk.columns = {entry(0, 3.0f), entry(0, -3.0f)};
  walk.rows = {entry(0, 0.0f)};
  walk.run();
  EXPECT_EQ(INT32_MAX, walk.dst[0]);
  EXPECT_EQ(INT32_MIN, walk.dst[1]);
}

TEST(ResizeBilinear, ColumnsFromXmaxOnNeverReadTheNextPixel) {
  // The one pixel is the whole block: a read of its neighbour lies outside.
  Walk walk(1, 1, 3, 2, 3);
  walk.src = {5, 6, 7};
  walk.xmax = 0;
  for (int i = 0; i < 9; ++i) walk.columns[i] = entry(i % 3, 0.5f);
  walk.rows = {entry(0, 0.5f), entry(0, 0.5f)};
  walk.run();
  for (int i = 0; i < 18; ++i) EXPECT_EQ(5 + i % 3, walk.dst[i]);
}

TEST(ResizeBilinear, NoRowsWriteNothing) {
  Walk walk(1, 1, 2, 0, 1);
  EXPECT_EQ(0, walk.run());
  const ResizeEntry none{};
  EXPECT_EQ(0, Resize_Bilinear(walk.src.data(), 1, 1, 1, walk.dst.data(), 1, 2, -5, 1, 2, walk.columns.data(), &none,
                               walk.row_a.data(), walk.row_b.data()));
}

TEST(ResizeBilinear, SecondRowStaysInsideTheSource) {
  Walk walk(1, 2, 1, 2, 1);
  walk.src = {10, 20};
  walk.columns = {entry(0, 0.0f)};
  walk.xmax = 0;
  walk.rows = {entry(1, 0.5f), entry(0, 0.5f)};
  walk.run();
  EXPECT_EQ(20, walk.dst[0]);
  EXPECT_EQ(15, walk.dst[1]);
}

TEST(ResizeBilinear, EveryOrderOfRowsGivesTheFormula) {
  RandomSource random;
  for (int round = 0; round < 200; ++round) {
    const int channels = random.between(1, 3);
    Walk walk(random.between(2, 6), random.between(1, 5), random.between(1, 9), random.between(1, 12), channels);
    for (int32_t& sample : walk.src) sample = random.between(-100000, 100000);
    walk.xmax = random.between(0, static_cast<int>(walk.columns.size()) / channels);
    for (size_t i = 0; i < walk.columns.size(); ++i) {
      const bool mixed = i < static_cast<size_t>(walk.xmax * channels);
      const int pixel = random.between(0, walk.src_width - (mixed ? 2 : 1));
      walk.columns[i] = entry(pixel * channels + static_cast<int>(i) % channels, random.real_between(0, 1));
    }
    // Reuse, swap and fresh rows in any order; a third of the weights is zero.
    for (ResizeEntry& row : walk.rows) {
      row = entry(random.between(0, walk.src_height - 1), random.between(0, 2) == 0 ? 0.0f : random.real_between(0, 1));
    }
    ASSERT_EQ(0, walk.run());
    const auto mixed_column = [&](int row, size_t i) {
      const int32_t* s = walk.src.data() + static_cast<size_t>(row) * walk.src_width * channels;
      const int32_t o = walk.columns[i].offset;
      if (i >= static_cast<size_t>(walk.xmax * channels)) return static_cast<float>(s[o]);
      const float a = static_cast<float>(s[o]), b = static_cast<float>(s[o + channels]);
      return a + (b - a) * weight_of(walk.columns[i]);
    };
    for (size_t y = 0; y < walk.rows.size(); ++y) {
      const int sy = walk.rows[y].offset;
      const float wy = weight_of(walk.rows[y]);
      for (size_t i = 0; i < walk.columns.size(); ++i) {
        float value = mixed_column(sy, i);
        if (wy > 0 && sy < walk.src_height - 1) value = value + (mixed_column(sy + 1, i) - value) * wy;
        ASSERT_EQ(static_cast<int32_t>(value), walk.dst[y * walk.columns.size() + i]) << "row " << y << " value " << i;
      }
    }
  }
}

TEST(MixColumns, EveryCountWithinItsBuffers) {
  RandomSource random;
  for (int count = 0; count < 24; ++count) {
    for (int mixed : {0, count / 2, count, count + 3}) {
      std::vector<int32_t> src(6);
      for (int32_t& sample : src) sample = random.between(-100, 100);
      std::vector<ResizeEntry> columns(count);
      for (ResizeEntry& column : columns) column = entry(random.between(0, 4), 0.5f);
      GuardedBlock<float> row(count);
      mix_columns(src.data(), columns.data(), row.data(), mixed, count, 1);
      for (int i = 0; i < count; ++i) {
        const float first = static_cast<float>(src[columns[i].offset]);
        const float next = static_cast<float>(src[columns[i].offset + 1]);
        EXPECT_EQ(i < mixed ? (first + next) / 2 : first, row[i]);
      }
    }
  }
}

}  // namespace
}  // namespace biseam::test
