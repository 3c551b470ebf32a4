#include "stages/image/pyr_down.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <vector>

#include "biseam/biseam.h"
#include "support/pyramid_formulas.hpp"
#include "support/test_image.hpp"

namespace biseam::test {
namespace {

constexpr int32_t kOld = -777;

TEST(PyrDown, FourByFourTakesTheHalfAndFiveByFiveTheBorderRoutine) {
  RandomSource random;
  TestImage four(4, 4), five(5, 5), two(2, 2), three(3, 3);
  four.randomize(random, 0, 255);
  five.randomize(random, 0, 255);
  EXPECT_EQ(0, PyrDown(four.record(), two.record()));
  EXPECT_EQ(reduced(four, 2, 2).samples(), two.samples());
  EXPECT_EQ(0, PyrDown(five.record(), three.record()));
  EXPECT_EQ(reduced(five, 3, 3).samples(), three.samples());
  // Each refuses nothing the dispatcher gives it, and the half refuses what is left to the border routine.
  EXPECT_EQ(0, PyrDownNormal(four.record(), two.record()));
  EXPECT_EQ(-1, PyrDownNormal(five.record(), three.record()));
}

TEST(PyrDown, EverySizeIsTheDirectSumOf25Taps) {
  RandomSource random;
  for (int height = 1; height < 15; ++height) {
    for (int width = 1; width < 15; ++width) {
      TestImage src(width, height);
      src.randomize(random, -70000, 70000);
      TestImage dst((width + 1) / 2, (height + 1) / 2, 3, kOld);
      ASSERT_EQ(0, PyrDown(src.record(), dst.record()));
      // Even sizes are exact halves; those of two pixels stay unwritten.
      const bool half = width % 2 == 0 && height % 2 == 0;
      const bool written = !half || (width > 2 && height > 2);
      const TestImage expected =
          written ? reduced(src, dst.width(), dst.height()) : TestImage(dst.width(), dst.height(), 3, kOld);
      ASSERT_EQ(expected.samples(), dst.samples()) << width << " x " << height;
    }
  }
}

TEST(PyrDown, FullRangeSamplesWrap) {
  RandomSource random;
  for (const auto& [width, height] : {std::pair{12, 8}, {13, 9}}) {
    TestImage src(width, height);
    for (int32_t& sample : src.samples()) sample = static_cast<int32_t>(random.word());
    TestImage dst((width + 1) / 2, (height + 1) / 2);
    ASSERT_EQ(0, PyrDown(src.record(), dst.record()));
    EXPECT_EQ(reduced(src, dst.width(), dst.height()).samples(), dst.samples());
  }
}

TEST(PyrDown, ConstantImageStaysConstantAtEverySize) {
  for (int height = 3; height < 20; ++height) {
    for (int width = 3; width < 20; ++width) {
      for (int32_t value : {0, 1, -1, 255, -255, 64 * 255}) {
        TestImage src(width, height, 3, value), dst((width + 1) / 2, (height + 1) / 2, 3, kOld);
        ASSERT_EQ(0, PyrDown(src.record(), dst.record()));
        ASSERT_EQ(TestImage(dst.width(), dst.height(), 3, value).samples(), dst.samples()) << width << " x " << height;
      }
    }
  }
}

TEST(PyrDown, HalfAndBorderAgreeOnEvenSizes) {
  RandomSource random;
  for (int height = 4; height <= 22; height += 2) {
    for (int width = 4; width <= 22; width += 2) {
      TestImage src(width, height);
      src.randomize(random, -100000, 100000);
      TestImage half(width / 2, height / 2), border(width / 2, height / 2);
      ASSERT_EQ(0, PyrDownNormal(src.record(), half.record()));
      ASSERT_EQ(0, PyrDownBorder(src.record(), border.record()));
      ASSERT_EQ(half.samples(), border.samples()) << width << " x " << height;
    }
  }
}

TEST(PyrDown, HalvesOfOddSizesRoundedDownAreServedByTheHalf) {
  RandomSource random;
  for (const auto& [width, height] : {std::pair{5, 4}, {4, 5}, {7, 9}, {11, 6}}) {
    TestImage src(width, height);
    src.randomize(random, -1000, 1000);
    TestImage dst(width / 2, height / 2);
    ASSERT_EQ(0, PyrDownNormal(src.record(), dst.record()));
    EXPECT_EQ(reduced(src, width / 2, height / 2).samples(), dst.samples()) << width << " x " << height;
  }
}

TEST(PyrDown, NegativeSumRoundsTowardMinusInfinity) {
  // Destination (1, 1) sees source (0, 0) with weight 1.
  for (const auto& [sum, expected] : {std::pair{-129, -1}, {-128, 0}}) {
    TestImage src(6, 6), dst(3, 3);
    for (int k = 0; k < 3; ++k) src.at(0, 0, k) = sum;
    ASSERT_EQ(0, PyrDown(src.record(), dst.record()));
    for (int k = 0; k < 3; ++k) EXPECT_EQ(expected, dst.at(1, 1, k)) << sum;
  }
}

TEST(PyrDown, OneChannelImageIsRefusedUnwritten) {
  for (const auto& [width, half] : {std::pair{8, 4}, {7, 4}}) {
    TestImage src(width, width, 1), dst(half, half, 1, kOld);
    EXPECT_EQ(Status::mismatch, pyr_down(*src, *dst));
    EXPECT_EQ(Status::mismatch, pyr_down_half(*src, *dst));
    EXPECT_EQ(Status::mismatch, pyr_down_border(*src, *dst));
    EXPECT_EQ(TestImage(half, half, 1, kOld).samples(), dst.samples());
  }
}

TEST(PyrDown, DestinationOfOtherChannelsIsRefusedUnwritten) {
  TestImage src(8, 8), dst(4, 4, 1, kOld);
  EXPECT_EQ(Status::mismatch, pyr_down_half(*src, *dst));
  EXPECT_EQ(Status::mismatch, pyr_down_border(*src, *dst));
  EXPECT_EQ(TestImage(4, 4, 1, kOld).samples(), dst.samples());
}

TEST(PyrDown, SameRecordIsRefused) {
  TestImage image(4, 4);
  EXPECT_EQ(-1, PyrDownNormal(image.record(), image.record()));
  TestImage empty(0, 0);
  EXPECT_EQ(-1, PyrDownNormal(empty.record(), empty.record()));
}

TEST(PyrDownBorder, HeightZeroReturns0) {
  TestImage src(8, 1), dst(4, 0);
  EXPECT_EQ(0, PyrDownBorder(src.record(), dst.record()));
  TestImage narrow(1, 5), none(0, 3);
  EXPECT_EQ(0, PyrDownBorder(narrow.record(), none.record()));
}

TEST(PyrDownBorder, SizesFurtherFromAHalfAreRefusedUnwritten) {
  TestImage src(10, 10);
  for (int width = 0; width < 12; ++width) {
    for (int height = 0; height < 12; ++height) {
      TestImage dst(width, height, 3, kOld);
      const bool fits = std::abs(2 * width - 10) <= 2 && std::abs(2 * height - 10) <= 2;
      EXPECT_EQ(fits ? Status::ok : Status::mismatch, pyr_down_border(*src, *dst)) << width << " x " << height;
      if (!fits) {
        EXPECT_EQ(TestImage(width, height, 3, kOld).samples(), dst.samples());
      }
    }
  }
}

TEST(PyrDownBorder, EmptySourceIsRefused) {
  TestImage src(0, 4), dst(1, 2);
  EXPECT_EQ(Status::mismatch, pyr_down_border(*src, *dst));
  TestImage flat(4, 0), low(2, 1);
  EXPECT_EQ(Status::mismatch, pyr_down_border(*flat, *low));
}

TEST(PyrDownBorder, OnePixelLessOrMoreThanAHalf) {
  RandomSource random;
  for (int size = 2; size < 20; ++size) {
    TestImage src(size, size);
    src.randomize(random, -5000, 5000);
    for (int dst_size = 0; dst_size <= size; ++dst_size) {
      if (std::abs(2 * dst_size - size) > 2) continue;
      TestImage dst(dst_size, dst_size, 3, kOld);
      ASSERT_EQ(0, PyrDownBorder(src.record(), dst.record()));
      // The rows follow the kernel everywhere, the columns up to the one that lies a whole pixel past an exact half.
      const int regular = size % 2 == 0 && size > 2 && dst_size == size / 2 + 1 ? dst_size - 1 : dst_size;
      for (int y = 0; y < dst_size; ++y) {
        for (int x = 0; x < regular; ++x) {
          for (int k = 0; k < 3; ++k) ASSERT_EQ(reduced_sample(src, x, y, k), dst.at(x, y, k)) << size << " to " << dst_size;
        }
      }
    }
  }
}

TEST(PyrDownBorder, ColumnPastAnExactHalfHasItsMiddleOnTheLastSourceColumn) {
  TestImage src(6, 3), dst(4, 2);
  for (int x = 0; x < 6; ++x) {
    for (int y = 0; y < 3; ++y) {
      for (int k = 0; k < 3; ++k) src.at(x, y, k) = 1000 * (x + 1) * (x + 1) + k;
    }
  }
  ASSERT_EQ(0, PyrDownBorder(src.record(), dst.record()));
  const int s3 = 16000, s4 = 25000, s5 = 36000;  // rows are alike: only the columns mix
  for (int k = 0; k < 3; ++k) EXPECT_EQ((6 * s5 + 8 * s4 + 2 * s3 + 16 * k + 8) >> 4, dst.at(3, 0, k));
}

TEST(PyrDownBorder, DimensionOneUsesIndexZero) {
  RandomSource random;
  TestImage dot(1, 1), dot_out(1, 1, 3, kOld);
  dot.randomize(random, -1000, 1000);
  ASSERT_EQ(0, PyrDown(dot.record(), dot_out.record()));
  EXPECT_EQ(dot.samples(), dot_out.samples());
  TestImage column(1, 7), column_out(1, 4);
  column.randomize(random, -1000, 1000);
  ASSERT_EQ(0, PyrDown(column.record(), column_out.record()));
  EXPECT_EQ(reduced(column, 1, 4).samples(), column_out.samples());
  TestImage row(7, 1), row_out(4, 1);
  row.randomize(random, -1000, 1000);
  ASSERT_EQ(0, PyrDown(row.record(), row_out.record()));
  EXPECT_EQ(reduced(row, 4, 1).samples(), row_out.samples());
}

TEST(PyrDownNormal, SourcesBelowFourPixelsLeaveTheDestinationAlone) {
  for (const auto& [width, height] : {std::pair{2, 2}, {2, 10}, {3, 10}, {10, 2}, {10, 3}, {3, 3}, {2, 3}}) {
    TestImage src(width, height, 3, 100), dst(width / 2, height / 2, 3, kOld);
    EXPECT_EQ(0, PyrDownNormal(src.record(), dst.record()));
    EXPECT_EQ(0, PyrDown(src.record(), dst.record()));
    EXPECT_EQ(TestImage(dst.width(), dst.height(), 3, kOld).samples(), dst.samples()) << width << " x " << height;
  }
}

TEST(PyrDownNormal, OtherSizesThanHalvesAreRefusedUnwritten) {
  TestImage src(8, 8);
  for (const auto& [width, height] : {std::pair{5, 4}, {4, 5}, {3, 4}, {4, 3}, {0, 4}, {9, 4}}) {
    TestImage dst(width, height, 3, kOld);
    EXPECT_EQ(-1, PyrDownNormal(src.record(), dst.record()));
    EXPECT_EQ(TestImage(width, height, 3, kOld).samples(), dst.samples());
  }
  TestImage thin(1, 8), none(0, 4);
  EXPECT_EQ(-1, PyrDownNormal(thin.record(), none.record()));
}

TEST(PyrDown, RowsAreFoundByTheStridesOfTheRecords) {
  RandomSource random;
  for (int width : {8, 9}) {
    TestImage src(width, 6), dst((width + 1) / 2, 3);
    src.randomize(random, 0, 255);
    TestImage wide_src(width + 2, 6, 3, 9999), wide_dst(dst.width() + 3, 3, 3, kOld);
    for (int y = 0; y < 6; ++y) {
      for (int x = 0; x < width; ++x) {
        for (int k = 0; k < 3; ++k) wide_src.at(x, y, k) = src.at(x, y, k);
      }
    }
    BlendImage from = *wide_src, to = *wide_dst;
    from.width = width;
    to.width = dst.width();
    ASSERT_EQ(0, PyrDown(&from, &to));
    ASSERT_EQ(0, PyrDown(src.record(), dst.record()));
    for (int y = 0; y < 3; ++y) {
      for (int x = 0; x < wide_dst.width(); ++x) {
        for (int k = 0; k < 3; ++k) EXPECT_EQ(x < dst.width() ? dst.at(x, y, k) : kOld, wide_dst.at(x, y, k));
      }
    }
  }
}

}  // namespace
}  // namespace biseam::test
