#include "stages/image/resize.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "biseam/biseam.h"
#include "support/test_image.hpp"

namespace biseam::test {
namespace {

constexpr int32_t kOld = -777;

// The source column or row of a destination one.
int picked(int position, int src_size, int dst_size) {
  const float scale = static_cast<float>(src_size) / static_cast<float>(dst_size);
  const float mapped = static_cast<float>((position + 0.5) * static_cast<double>(scale) - 0.5);
  return std::min(std::max(static_cast<int>(std::floor(mapped)), 0), src_size - 1);
}

TestImage resized(const TestImage& src, int width, int height) {
  TestImage dst(width, height, src.channels());
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      for (int k = 0; k < src.channels(); ++k) {
        dst.at(x, y, k) = src.at(picked(x, src.width(), width), picked(y, src.height(), height), k);
      }
    }
  }
  return dst;
}

TestImage numbered(int width, int height) {
  TestImage image(width, height);
  for (size_t i = 0; i < image.samples().size(); ++i) image.samples()[i] = static_cast<int32_t>(i);
  return image;
}

TEST(Resize, HalvingPicksColumnsAndRowsZeroAndTwo) {
  TestImage src = numbered(4, 4), dst(2, 2);
  EXPECT_EQ(0, Resize(src.record(), dst.record(), BISEAM_RGB));
  for (int y = 0; y < 2; ++y) {
    for (int x = 0; x < 2; ++x) {
      for (int k = 0; k < 3; ++k) EXPECT_EQ(src.at(2 * x, 2 * y, k), dst.at(x, y, k));
    }
  }
}

TEST(Resize, DoublingRepeatsTheFirstColumnAndRowThreeTimes) {
  TestImage src = numbered(2, 2), dst(4, 4);
  EXPECT_EQ(0, Resize(src.record(), dst.record(), BISEAM_RGB));
  for (int y = 0; y < 4; ++y) {
    for (int x = 0; x < 4; ++x) {
      for (int k = 0; k < 3; ++k) EXPECT_EQ(src.at(x / 3, y / 3, k), dst.at(x, y, k));
    }
  }
}

TEST(Resize, EqualSizesGiveAnExactCopy) {
  RandomSource random;
  for (int size : {1, 2, 7, 33}) {
    TestImage src(size, size + 3), dst(size, size + 3, 3, kOld);
    src.randomize(random, -(1 << 24) + 1, (1 << 24) - 1);
    EXPECT_EQ(0, Resize(src.record(), dst.record(), BISEAM_RGB));
    EXPECT_EQ(src.samples(), dst.samples());
  }
}

TEST(Resize, GrayTakesStrideAndSamplesFromItsOwnLayout) {
  RandomSource random;
  // The gray layout counts for every type but that of three channels.
  for (int type : {8, 0, 99}) {
    TestGray src(9, 6), dst(5, 7, kOld);
    for (int32_t& sample : src.samples()) sample = random.between(-1000, 1000);
    EXPECT_EQ(0, Resize(src.record(), dst.record(), type));
    for (int y = 0; y < 7; ++y) {
      for (int x = 0; x < 5; ++x) EXPECT_EQ(src.samples()[picked(y, 6, 7) * 9 + picked(x, 9, 5)], dst.samples()[y * 5 + x]);
    }
  }
}

TEST(Resize, ThreeChannelsTakeTheirsFromTheBandLayout) {
  RandomSource random;
  TestImage src(9, 6), dst(5, 7, 3, kOld);
  src.randomize(random, -1000, 1000);
  EXPECT_EQ(0, Resize(src.record(), dst.record(), BISEAM_RGB));
  EXPECT_EQ(resized(src, 5, 7).samples(), dst.samples());
}

TEST(Resize, RowsAreFoundByTheStridesOfTheRecords) {
  RandomSource random;
  TestImage src(9, 6), dst(8, 7, 3, kOld);
  src.randomize(random, -1000, 1000);
  BlendImage from = *src, to = *dst;
  from.width = 6;
  to.width = 5;
  EXPECT_EQ(0, Resize(&from, &to, BISEAM_RGB));
  TestGray gray(9, 6), gray_dst(8, 7, kOld);
  for (int32_t& sample : gray.samples()) sample = random.between(-1000, 1000);
  gray.record()->width = 6;
  gray_dst.record()->width = 5;
  EXPECT_EQ(0, Resize(gray.record(), gray_dst.record(), BISEAM_GRAY));
  for (int y = 0; y < 7; ++y) {
    for (int x = 0; x < 8; ++x) {
      const int column = x < 5 ? picked(x, 6, 5) : 0, row = picked(y, 6, 7);
      for (int k = 0; k < 3; ++k) EXPECT_EQ(x < 5 ? src.at(column, row, k) : kOld, dst.at(x, y, k));
      EXPECT_EQ(x < 5 ? gray.samples()[row * 9 + column] : kOld, gray_dst.samples()[y * 8 + x]);
    }
  }
}

TEST(Resize, MaskValuesAreNeverMixed) {
  RandomSource random;
  for (const auto& [width, height] : {std::pair{3, 4}, {11, 23}, {31, 7}, {64, 64}}) {
    TestImage src(13, 11), dst(width, height, 3, kOld);
    for (int32_t& sample : src.samples()) sample = random.between(0, 1) * 255;
    EXPECT_EQ(0, Resize(src.record(), dst.record(), BISEAM_RGB));
    for (int32_t sample : dst.samples()) EXPECT_TRUE(sample == 0 || sample == 255) << sample;
  }
}

TEST(Resize, PicksExactlyForAllMagnitudesBelow2To24) {
  RandomSource random;
  for (int round = 0; round < 60; ++round) {
    TestImage src(random.between(1, 20), random.between(1, 20));
    const int32_t bound = (1 << random.between(0, 24)) - 1;
    // Extremes and zeros side by side, as well as everything between.
    for (int32_t& sample : src.samples()) {
      const int kind = random.between(0, 3);
      sample = kind == 0 ? 0 : kind == 1 ? bound : kind == 2 ? -bound : random.between(-bound, bound);
    }
    TestImage dst(random.between(1, 45), random.between(1, 45), 3, kOld);
    ASSERT_EQ(0, Resize(src.record(), dst.record(), BISEAM_RGB));
    ASSERT_EQ(resized(src, dst.width(), dst.height()).samples(), dst.samples())
        << src.width() << " x " << src.height() << " to " << dst.width() << " x " << dst.height() << " bound " << bound;
  }
}

TEST(Resize, LargerSamplesComeOutAsTheirNearestFloat) {
  TestImage src(1, 1), dst(2, 2);
  const int32_t large[3] = {(1 << 24) + 1, INT32_MAX, INT32_MIN};
  for (int k = 0; k < 3; ++k) src.at(0, 0, k) = large[k];
  EXPECT_EQ(0, Resize(src.record(), dst.record(), BISEAM_RGB));
  EXPECT_EQ(1 << 24, dst.at(1, 1, 0));
  EXPECT_EQ(INT32_MAX, dst.at(1, 1, 1));
  EXPECT_EQ(INT32_MIN, dst.at(1, 1, 2));
}

TEST(Resize, EverySizePairStaysInsideTheSource) {
  for (int src_size = 1; src_size < 40; ++src_size) {
    TestImage src = numbered(src_size, src_size);
    for (int dst_size = 1; dst_size < 90; dst_size += dst_size < 45 ? 1 : 7) {
      TestImage dst(dst_size, 1), column(1, dst_size);
      TestImage row = numbered(src_size, 1), tall = numbered(1, src_size);
      ASSERT_EQ(Status::ok, resize(*row, *dst));
      ASSERT_EQ(Status::ok, resize(*tall, *column));
      ASSERT_EQ(resized(row, dst_size, 1).samples(), dst.samples()) << src_size << " to " << dst_size;
      ASSERT_EQ(resized(tall, 1, dst_size).samples(), column.samples()) << src_size << " to " << dst_size;
    }
  }
}

TEST(Resize, LargeSizesWhereTheMappingIsRoundedStayInsideTheSource) {
  // Positions this large have no float of their own: the last one is rounded up, to the size.
  const int size = (1 << 24) + 4;
  TestGray src(size, 1, 1), dst(size, 1, kOld);
  src.samples()[size - 1] = 2;
  ASSERT_EQ(Status::ok, resize(*src, *dst));
  EXPECT_EQ(2, dst.samples()[size - 1]);
  TestGray tall(1, size, 1), column(1, size, kOld);
  tall.samples()[size - 1] = 2;
  ASSERT_EQ(Status::ok, resize(*tall, *column));
  EXPECT_EQ(2, column.samples()[size - 1]);
}

TEST(Resize, EmptySourceLeavesTheDestinationAlone) {
  for (const auto& [width, height] : {std::pair{0, 3}, {3, 0}, {0, 0}}) {
    TestImage src(width, height), dst(2, 2, 3, kOld);
    EXPECT_EQ(0, Resize(src.record(), dst.record(), BISEAM_RGB));
    EXPECT_EQ(TestImage(2, 2, 3, kOld).samples(), dst.samples());
  }
}

TEST(Resize, EmptyDestinationReturns0) {
  TestImage src(3, 3), flat(3, 0), narrow(0, 3);
  EXPECT_EQ(0, Resize(src.record(), flat.record(), BISEAM_RGB));
  EXPECT_EQ(0, Resize(src.record(), narrow.record(), BISEAM_RGB));
  BlendImage negative = *flat;
  negative.width = -4;
  negative.height = -4;
  EXPECT_EQ(0, Resize(src.record(), &negative, BISEAM_RGB));
}

TEST(Resize, OtherChannelCountInTheDestinationLeavesItAlone) {
  TestImage src(3, 3), dst(4, 4, 1, kOld);
  EXPECT_EQ(Status::mismatch, resize(*src, *dst));
  EXPECT_EQ(0, Resize(src.record(), dst.record(), BISEAM_RGB));
  EXPECT_EQ(TestImage(4, 4, 1, kOld).samples(), dst.samples());
}

}  // namespace
}  // namespace biseam::test
