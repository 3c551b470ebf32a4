#include "stages/image/pyr_up.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "biseam/biseam.h"
#include "support/pyramid_formulas.hpp"
#include "support/test_image.hpp"

namespace biseam::test {
namespace {

constexpr int32_t kOld = -777;

TEST(PyrUp, ThreeByThreeToSixTakesTheDoubleAndToFiveTheBorderRoutine) {
  RandomSource random;
  TestImage src(3, 3), six(6, 6), five(5, 5), refused(5, 5, 3, kOld);
  src.randomize(random, -500, 500);
  ASSERT_EQ(0, PyrUp(src.record(), six.record()));
  ASSERT_EQ(0, PyrUp(src.record(), five.record()));
  EXPECT_EQ(expanded(src, 6, 6).samples(), six.samples());
  EXPECT_EQ(expanded(src, 5, 5).samples(), five.samples());
  EXPECT_EQ(-1, PyrUpNormal(src.record(), refused.record()));
  EXPECT_EQ(TestImage(5, 5, 3, kOld).samples(), refused.samples());
  // All but the last row of the smaller result is part of the larger one.
  bool last_row_differs = false;
  for (int y = 0; y < 5; ++y) {
    for (int x = 0; x < 5; ++x) {
      for (int k = 0; k < 3; ++k) {
        if (y < 4) {
          EXPECT_EQ(six.at(x, y, k), five.at(x, y, k));
        } else {
          last_row_differs = last_row_differs || six.at(x, y, k) != five.at(x, y, k);
        }
      }
    }
  }
  EXPECT_TRUE(last_row_differs);
}

TEST(PyrUp, LastRowOfAnOddHeightMirrorsTheRowBefore) {
  TestImage src(1, 3), dst(1, 5);
  for (int y = 0; y < 3; ++y) {
    for (int k = 0; k < 3; ++k) src.at(0, y, k) = 100 * (y + 1) * (y + 1);
  }
  ASSERT_EQ(0, PyrUp(src.record(), dst.record()));
  for (int k = 0; k < 3; ++k) EXPECT_EQ((400 + 6 * 900 + 400) / 8, dst.at(0, 4, k));
}

TEST(PyrUp, EveryDoubleAndEveryOneLess) {
  RandomSource random;
  for (int height = 1; height < 9; ++height) {
    for (int width = 1; width < 9; ++width) {
      TestImage src(width, height);
      src.randomize(random, -70000, 70000);
      for (int dst_height : {2 * height, 2 * height - 1}) {
        for (int dst_width : {2 * width, 2 * width - 1}) {
          TestImage dst(dst_width, dst_height, 3, kOld);
          ASSERT_EQ(0, PyrUp(src.record(), dst.record()));
          const bool is_double = dst_width == 2 * width && dst_height == 2 * height;
          const bool written = !is_double || (width > 1 && height > 1);
          const TestImage expected = written ? expanded(src, dst_width, dst_height) : TestImage(dst_width, dst_height, 3, kOld);
          ASSERT_EQ(expected.samples(), dst.samples())
              << width << " x " << height << " to " << dst_width << " x " << dst_height;
        }
      }
    }
  }
}

TEST(PyrUp, DoubleAndBorderAgreeOnDoubles) {
  RandomSource random;
  for (int height = 2; height < 12; ++height) {
    for (int width = 2; width < 12; ++width) {
      TestImage src(width, height), one(2 * width, 2 * height), other(2 * width, 2 * height);
      for (int32_t& sample : src.samples()) sample = static_cast<int32_t>(random.word());
      ASSERT_EQ(0, PyrUpNormal(src.record(), one.record()));
      ASSERT_EQ(0, PyrUpBorder(src.record(), other.record()));
      ASSERT_EQ(one.samples(), other.samples()) << width << " x " << height;
    }
  }
}

TEST(PyrUp, ConstantImageStaysConstant) {
  for (int32_t value : {1, -1, 255, -255, 64 * 255}) {
    for (int width = 2; width < 8; ++width) {
      for (int less : {0, 1}) {
        TestImage src(width, width, 3, value), dst(2 * width - less, 2 * width - less, 3, kOld);
        ASSERT_EQ(0, PyrUp(src.record(), dst.record()));
        EXPECT_EQ(TestImage(dst.width(), dst.height(), 3, value).samples(), dst.samples());
      }
    }
  }
}

TEST(PyrUpNormal, SourcesOfOnePixelLeaveTheDestinationAlone) {
  for (const auto& [width, height] : {std::pair{1, 1}, {1, 5}, {5, 1}, {0, 0}, {0, 3}}) {
    TestImage src(width, height, 3, 9), dst(2 * width, 2 * height, 3, kOld);
    EXPECT_EQ(0, PyrUpNormal(src.record(), dst.record()));
    EXPECT_EQ(0, PyrUp(src.record(), dst.record()));
    EXPECT_EQ(TestImage(2 * width, 2 * height, 3, kOld).samples(), dst.samples());
  }
}

TEST(PyrUpNormal, OneChannelIsRefusedUnwritten) {
  TestImage src(3, 3, 1, 5), dst(6, 6, 1, kOld);
  EXPECT_EQ(-1, PyrUpNormal(src.record(), dst.record()));
  EXPECT_EQ(-1, PyrUp(src.record(), dst.record()));
  EXPECT_EQ(TestImage(6, 6, 1, kOld).samples(), dst.samples());
}

TEST(PyrUpBorder, AnyChannelCount) {
  RandomSource random;
  for (int channels = 1; channels < 8; ++channels) {
    for (int less : {0, 1}) {
      TestImage src(4, 3, channels), dst(8 - less, 6 - less, channels, kOld);
      src.randomize(random, -500, 500);
      ASSERT_EQ(0, PyrUpBorder(src.record(), dst.record()));
      EXPECT_EQ(expanded(src, 8 - less, 6 - less).samples(), dst.samples()) << channels;
    }
  }
}

TEST(PyrUpBorder, OtherChannelCountsInTheDestinationAreRefusedUnwritten) {
  TestImage src(3, 3), dst(5, 5, 1, kOld);
  EXPECT_EQ(Status::mismatch, pyr_up_border(*src, *dst));
  EXPECT_EQ(TestImage(5, 5, 1, kOld).samples(), dst.samples());
}

TEST(PyrUpBorder, OneColumnGivesTheSameValueInBothColumns) {
  TestImage src(1, 1), dst(2, 2, 3, kOld);
  for (int k = 0; k < 3; ++k) src.at(0, 0, k) = 10 * k - 7;
  ASSERT_EQ(0, PyrUpBorder(src.record(), dst.record()));
  for (int y = 0; y < 2; ++y) {
    for (int x = 0; x < 2; ++x) {
      for (int k = 0; k < 3; ++k) EXPECT_EQ(10 * k - 7, dst.at(x, y, k));
    }
  }
}

TEST(PyrUpBorder, DestinationHeightOneUsesTheOnlyRow) {
  RandomSource random;
  TestImage src(3, 1), dst(6, 1, 3, kOld);
  src.randomize(random, -500, 500);
  ASSERT_EQ(0, PyrUp(src.record(), dst.record()));
  EXPECT_EQ(expanded(src, 6, 1).samples(), dst.samples());
}

TEST(PyrUpBorder, OneMoreThanADoubleRepeatsTheLastColumnAndRow) {
  RandomSource random;
  for (int height = 1; height < 6; ++height) {
    for (int width = 1; width < 6; ++width) {
      for (int channels : {1, 3, 4}) {
        TestImage src(width, height, channels);
        src.randomize(random, -5000, 5000);
        // The size check knows odd sizes and their remainder only: one more in either direction, or in both.
        for (const auto& [more_x, more_y] : {std::pair{1, 0}, {0, 1}, {1, 1}}) {
          TestImage dst(2 * width + more_x, 2 * height + more_y, channels, kOld);
          ASSERT_EQ(0, PyrUpBorder(src.record(), dst.record()));
          const TestImage regular = expanded(src, 2 * width, 2 * height);
          for (int y = 0; y < dst.height(); ++y) {
            for (int x = 0; x < dst.width(); ++x) {
              for (int k = 0; k < channels; ++k) {
                ASSERT_EQ(regular.at(std::min(x, 2 * width - 1), std::min(y, 2 * height - 1), k), dst.at(x, y, k))
                    << width << " x " << height << " at " << x << ", " << y;
              }
            }
          }
        }
      }
    }
  }
}

TEST(PyrUpBorder, EmptySourceReturns0AndWritesNothing) {
  TestImage flat(3, 0), none(5, 0);
  EXPECT_EQ(0, PyrUpBorder(flat.record(), none.record()));
  // One more than twice nothing passes the size check.
  TestImage nothing(0, 2), column(1, 4, 3, kOld);
  EXPECT_EQ(0, PyrUpBorder(nothing.record(), column.record()));
  EXPECT_EQ(TestImage(1, 4, 3, kOld).samples(), column.samples());
  TestImage no_rows(2, 0), row(4, 1, 3, kOld);
  EXPECT_EQ(0, PyrUpBorder(no_rows.record(), row.record()));
  EXPECT_EQ(TestImage(4, 1, 3, kOld).samples(), row.samples());
}

TEST(PyrUpBorder, OtherSizesAreRefusedUnwritten) {
  TestImage src(4, 4);
  for (int width = 0; width < 12; ++width) {
    for (int height = 0; height < 12; ++height) {
      TestImage dst(width, height, 3, kOld);
      const bool fits = width >= 7 && width <= 9 && height >= 7 && height <= 9;
      EXPECT_EQ(fits ? Status::ok : Status::mismatch, pyr_up_border(*src, *dst)) << width << " x " << height;
      if (!fits) {
        EXPECT_EQ(TestImage(width, height, 3, kOld).samples(), dst.samples());
      }
    }
  }
}

TEST(PyrUp, WeightedSumsRoundTowardMinusInfinity) {
  // Output (2, 2) sees source (0, 0) with weight 1 of 64.
  for (const auto& [sum, expected] : {std::pair{-33, -1}, {-32, 0}}) {
    TestImage src(3, 3), dst(6, 6);
    for (int k = 0; k < 3; ++k) src.at(0, 0, k) = sum;
    ASSERT_EQ(0, PyrUp(src.record(), dst.record()));
    for (int k = 0; k < 3; ++k) EXPECT_EQ(expected, dst.at(2, 2, k)) << sum;
  }
}

TEST(PyrUp, RowsAreFoundByTheStridesOfTheRecords) {
  RandomSource random;
  TestImage src(4, 3), dst(7, 5), wide_src(6, 3, 3, 9999), wide_dst(9, 5, 3, kOld);
  src.randomize(random, 0, 255);
  for (int y = 0; y < 3; ++y) {
    for (int x = 0; x < 4; ++x) {
      for (int k = 0; k < 3; ++k) wide_src.at(x, y, k) = src.at(x, y, k);
    }
  }
  BlendImage from = *wide_src, to = *wide_dst;
  from.width = 4;
  to.width = 7;
  ASSERT_EQ(0, PyrUp(&from, &to));
  ASSERT_EQ(0, PyrUp(src.record(), dst.record()));
  for (int y = 0; y < 5; ++y) {
    for (int x = 0; x < 9; ++x) {
      for (int k = 0; k < 3; ++k) EXPECT_EQ(x < 7 ? dst.at(x, y, k) : kOld, wide_dst.at(x, y, k));
    }
  }
}

}  // namespace
}  // namespace biseam::test
