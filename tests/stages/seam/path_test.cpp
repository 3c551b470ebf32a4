#include "stages/seam/path.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "stages/seam/images.hpp"

namespace biseam::test {
namespace {

constexpr int32_t kUntouched = 7777;

// Sample value that tells its place.
int32_t mark(int x, int y, int channel) { return 10000 * y + 10 * x + channel; }

struct MarkedSource {
  MarkedSource(int width, int height) : samples(static_cast<size_t>(3 * width * height)) {
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x)
        for (int c = 0; c < 3; ++c) samples[static_cast<size_t>(3 * (y * width + x) + c)] = mark(x, y, c);
    record = color_record(samples.data(), width, height);
  }
  std::vector<int32_t> samples;
  BlendImage record;
};

// Source column that the strip's first column shows.
int first_column(const BlendImage& source, int findpath_width, int trans_width, int side) {
  GuardedSamples out(3, kUntouched);
  BlendImage strip = color_record(out.data(), 1, 1);
  copy_strip(source, strip, findpath_width, trans_width, side);
  return out[0] / 10;
}

TEST(CopyStrip, BothStripsStartAtTheSameColumnOfTheBand) {
  const MarkedSource source(20, 1);
  EXPECT_EQ(first_column(source.record, 8, 4, 1), 8);
  EXPECT_EQ(first_column(source.record, 8, 4, 0), 4);  // source 2 starts at band column 4
}

TEST(CopyStrip, HalvingRoundsTowardZero) {
  const MarkedSource source(21, 1);
  EXPECT_EQ(first_column(source.record, 8, 4, 1), 8);   // 17 / 2
  EXPECT_EQ(first_column(source.record, 8, 4, 0), 4);   // 9 / 2
  EXPECT_EQ(first_column(source.record, 18, 4, 0), 0);  // -1 / 2
}

TEST(CopyStrip, CopiesThreeSamplesOfEveryPixelOfTheStrip) {
  const unsigned seed = 33001;
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  for (int round = 0; round < 100; ++round) {
    const int feather = static_cast<int>(random() % 12);
    const int trans = static_cast<int>(random() % 12);
    const int width = trans + 2 * feather + 1;
    const int height = 1 + static_cast<int>(random() % 5);
    const int findpath = 1 + static_cast<int>(random() % static_cast<unsigned>(2 * feather + 1));
    const MarkedSource source(width, height);
    for (const int side : {0, 1}) {
      GuardedSamples out(3 * findpath * height, kUntouched);
      BlendImage strip = color_record(out.data(), findpath, height);
      copy_strip(source.record, strip, findpath, trans, side);
      const int first = (side == 1 ? trans + width - findpath : width - trans - findpath) / 2;
      for (int y = 0; y < height; ++y)
        for (int x = 0; x < findpath; ++x)
          for (int c = 0; c < 3; ++c) ASSERT_EQ(out[3 * (y * findpath + x) + c], mark(first + x, y, c));
    }
  }
}

TEST(CopyStrip, SizeComesFromTheStripNotFromTheWidthArgument) {
  const MarkedSource source(20, 3);
  GuardedSamples out(3 * 2 * 2, kUntouched);
  BlendImage strip = color_record(out.data(), 2, 2);
  copy_strip(source.record, strip, 8, 4, 1);
  EXPECT_EQ(out[0], mark(8, 0, 0));
  EXPECT_EQ(out[11], mark(9, 1, 2));
}

TEST(CopyStrip, EachImageFollowsItsOwnStrideAndStep) {
  std::vector<int32_t> samples(200);
  for (size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<int32_t>(i);
  BlendImage source = color_record(samples.data(), 10, 3);
  source.stride = 60;
  source.steps[0] = 5;
  GuardedSamples out(2 * 20 + 4 + 3, kUntouched);
  BlendImage strip = color_record(out.data(), 2, 3);
  strip.stride = 20;
  strip.steps[0] = 4;
  copy_strip(source, strip, 2, 2, 1);
  for (int y = 0; y < 3; ++y)
    for (int x = 0; x < 2; ++x)
      for (int c = 0; c < 3; ++c) EXPECT_EQ(out[y * 20 + 4 * x + c], y * 60 + 5 * (5 + x) + c);
  EXPECT_EQ(out[3], kUntouched);
}

TEST(CopyStrip, ColumnsOutsideTheSourceRepeatItsEdge) {
  const MarkedSource source(6, 1);
  GuardedSamples out(3 * 10, kUntouched);
  BlendImage strip = color_record(out.data(), 10, 1);
  copy_strip(source.record, strip, 10, 2, 0);  // starts at (6 - 2 - 10) / 2 = -3
  const int expected[] = {0, 0, 0, 0, 1, 2, 3, 4, 5, 5};
  for (int x = 0; x < 10; ++x)
    for (int c = 0; c < 3; ++c) EXPECT_EQ(out[3 * x + c], mark(expected[x], 0, c));
}

TEST(CopyStrip, StartBeyondEitherEndShowsTheEdge) {
  const MarkedSource source(6, 1);
  constexpr int most = std::numeric_limits<int>::max();
  constexpr int least = std::numeric_limits<int>::min();
  EXPECT_EQ(first_column(source.record, 0, most, 1), 5);
  EXPECT_EQ(first_column(source.record, 0, most, 0), 0);
  EXPECT_EQ(first_column(source.record, least, least, 0), 5);
  EXPECT_EQ(first_column(source.record, most, least, 1), 0);
}

TEST(CopyStrip, RowsBelowTheSourceRepeatItsLastRow) {
  const MarkedSource source(6, 2);
  GuardedSamples out(3 * 2 * 4, kUntouched);
  BlendImage strip = color_record(out.data(), 2, 4);
  copy_strip(source.record, strip, 2, 0, 1);
  for (int y = 0; y < 4; ++y) EXPECT_EQ(out[6 * y], mark(2, y == 0 ? 0 : 1, 0));
}

TEST(CopyStrip, EmptyImagesCopyNothing) {
  const MarkedSource source(6, 2);
  GuardedSamples out(6, kUntouched);
  for (const auto& [width, height] : {std::pair{0, 2}, {2, 0}, {-1, 2}, {2, -1}}) {
    BlendImage strip = color_record(out.data(), width, height);
    copy_strip(source.record, strip, 2, 2, 1);
    const BlendImage empty = color_record(nullptr, width, height);
    strip = color_record(out.data(), 2, 1);
    copy_strip(empty, strip, 2, 2, 1);
  }
  EXPECT_EQ(out.values(), std::vector<int32_t>(6, kUntouched));
}

TEST(FillLeftHalf, OddWidthLeavesTheMiddleColumnToTheRight) {
  GuardedSamples out(3 * 7 * 2, 0);
  BlendImage mask = color_record(out.data(), 7, 2);
  fill_left_half(mask);
  for (int y = 0; y < 2; ++y)
    for (int x = 0; x < 7; ++x)
      for (int c = 0; c < 3; ++c) EXPECT_EQ(out[3 * (7 * y + x) + c], x < 3 ? 64 : 0);
}

TEST(FillLeftHalf, KeepsEarlierWeightsInTheRightHalf) {
  GuardedSamples out(3 * 6, 0);
  for (int i = 12; i < 18; ++i) out[i] = 64;
  out[9] = 5;
  BlendImage mask = color_record(out.data(), 6, 1);
  fill_left_half(mask);
  const std::vector<int32_t> expected{64, 64, 64, 64, 64, 64, 64, 64, 64, 5, 0, 0, 64, 64, 64, 64, 64, 64};
  EXPECT_EQ(out.values(), expected);
}

TEST(FillLeftHalf, SmallAndEmptyMasksWriteNothing) {
  GuardedSamples out(3, 1);
  for (const auto& [width, height] : {std::pair{1, 1}, {0, 1}, {-1, 1}, {-5, 1}, {4, 0}, {4, -1}}) {
    BlendImage mask = color_record(out.data(), width, height);
    fill_left_half(mask);
  }
  EXPECT_EQ(out.values(), std::vector<int32_t>(3, 1));
}

}  // namespace
}  // namespace biseam::test
