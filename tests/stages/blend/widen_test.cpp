#include "stages/blend/widen.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "biseam/biseam.h"
#include "support/test_image.hpp"

namespace biseam::test {
namespace {

TestImage numbered(int width, int height) {
  TestImage image(width, height);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      for (int k = 0; k < 3; ++k) image.at(x, y, k) = 1000 * y + 10 * x + k;
    }
  }
  return image;
}

std::vector<int> columns_of(const TestImage& band, int y) {
  std::vector<int> columns;
  for (int x = 0; x < band.width(); ++x) columns.push_back((band.at(x, y, 0) - 1000 * y) / 10);
  return columns;
}

TEST(CreatBlend, Source1IsMirroredAtItsRightEdge) {
  TestImage source = numbered(7, 2), band(10, 2);
  CreatBlend(source.record(), band.record(), 3, 1);
  for (int y = 0; y < 2; ++y) EXPECT_EQ((std::vector<int>{0, 1, 2, 3, 4, 5, 6, 6, 5, 4}), columns_of(band, y));
}

TEST(CreatBlend, Source2IsMirroredAtItsLeftEdge) {
  TestImage source = numbered(7, 2), band(10, 2);
  CreatBlend(source.record(), band.record(), 3, 0);
  for (int y = 0; y < 2; ++y) EXPECT_EQ((std::vector<int>{2, 1, 0, 0, 1, 2, 3, 4, 5, 6}), columns_of(band, y));
}

TEST(CreatBlend, TransitionWidthZeroCopiesBothSources) {
  TestImage source = numbered(6, 3);
  for (int side : {0, 1}) {
    TestImage band(6, 3);
    CreatBlend(source.record(), band.record(), 0, side);
    EXPECT_EQ(source.samples(), band.samples());
  }
}

TEST(CreatBlend, EveryBandIsItsColumnFormula) {
  RandomSource random;
  for (int feather = 0; feather < 6; ++feather) {
    for (int t = 0; t < 9; ++t) {
      const int width = 2 * (t + feather), source_width = t + 2 * feather;
      TestImage source(source_width, 3), band1(width, 3), band2(width, 3);
      source.randomize(random, -999, 999);
      CreatBlend(source.record(), band1.record(), t, 1);
      CreatBlend(source.record(), band2.record(), t, 0);
      for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < width; ++x) {
          const int c1 = x < width - t ? x : 2 * (width - t) - 1 - x;
          const int c2 = x < t ? t - 1 - x : x - t;
          for (int k = 0; k < 3; ++k) {
            EXPECT_EQ(source.at(c1, y, k), band1.at(x, y, k));
            EXPECT_EQ(source.at(c2, y, k), band2.at(x, y, k));
          }
        }
      }
    }
  }
}

TEST(CreatBlend, BothSourcesCoverTheMiddle) {
  const int t = 4, feather = 3;
  TestImage source = numbered(t + 2 * feather, 1), band1(2 * (t + feather), 1), band2(2 * (t + feather), 1);
  CreatBlend(source.record(), band1.record(), t, 1);
  CreatBlend(source.record(), band2.record(), t, 0);
  for (int x = t; x < t + 2 * feather; ++x) {
    EXPECT_EQ(x, columns_of(band1, 0)[x]);
    EXPECT_EQ(x - t, columns_of(band2, 0)[x]);
  }
}

TEST(CreatBlend, RowsAndPixelsAreFoundByTheRecords) {
  TestImage wide_source = numbered(9, 2), wide_band(12, 2, 3, -1);
  BlendImage source = *wide_source, band = *wide_band;
  source.width = 7;
  band.width = 10;
  CreatBlend(&source, &band, 3, 1);
  EXPECT_EQ(1000 + 60, wide_band.at(6, 1, 0));
  EXPECT_EQ(1000 + 40 + 2, wide_band.at(9, 1, 2));
  EXPECT_EQ(-1, wide_band.at(10, 1, 0));
}

TEST(Widen, SizesThatDoNotBelongTogetherReadNothingOutsideTheSource) {
  RandomSource random;
  for (int round = 0; round < 300; ++round) {
    TestImage source(random.between(1, 9), random.between(1, 4), 3, 5), band(random.between(0, 20), random.between(0, 6));
    widen(*source, *band, random.between(-12, 12), random.between(0, 1));
    EXPECT_EQ(TestImage(band.width(), band.height(), 3, 5).samples(), band.samples());
  }
}

TEST(Widen, EmptySourceLeavesTheBandAlone) {
  TestImage source(0, 4), band(6, 4, 3, -1);
  widen(*source, *band, 2, 1);
  EXPECT_EQ(TestImage(6, 4, 3, -1).samples(), band.samples());
}

}  // namespace
}  // namespace biseam::test
