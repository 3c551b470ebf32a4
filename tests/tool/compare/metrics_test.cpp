#include "compare/metrics.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "tool/compare/luma_planes.hpp"

namespace biseam::tool {
namespace {

using namespace test;

TEST(Psnr, OfIdenticalPicturesIsInfinite) {
  const Quality quality = measure_whole({16, 12}, flat_plane({16, 12}, 7), flat_plane({16, 12}, 7));
  EXPECT_TRUE(std::isinf(quality.psnr) && quality.psnr > 0);
  EXPECT_TRUE(std::isinf(quality.weighted_psnr) && quality.weighted_psnr > 0);
  EXPECT_EQ(quality.ssim, 1);
}

TEST(Psnr, OfADifferenceOfTenEverywhere) {
  const Quality quality = measure_whole({16, 12}, flat_plane({16, 12}, 100), flat_plane({16, 12}, 110));
  EXPECT_NEAR(quality.psnr, 28.1308036, 1e-6);
  EXPECT_NEAR(quality.weighted_psnr, 28.1308036, 1e-6);
}

TEST(Psnr, OfBlackAgainstWhiteIsZero) {
  EXPECT_NEAR(measure_whole({16, 12}, flat_plane({16, 12}, 0), flat_plane({16, 12}, 255)).psnr, 0, 1e-12);
}

TEST(Psnr, WeightsARowByTheCosineOfItsLatitude) {
  const Size size{16, 12};
  for (const int row : {0, 5, 9}) {
    LumaPlane b = flat_plane(size, 50);
    b[std::size_t(row) * 16 + 3] = 70;
    double weights = 0;
    for (int y = 0; y < 12; ++y) weights += 16 * std::cos(std::numbers::pi * ((y + 1) / 12.0 - 0.5));
    const double square_mean = 400 * std::cos(std::numbers::pi * ((row + 1) / 12.0 - 0.5)) / weights;
    const Quality quality = measure_whole(size, flat_plane(size, 50), b);
    EXPECT_NEAR(quality.weighted_psnr, 10 * std::log10(65025 / square_mean), 1e-9);
    EXPECT_NEAR(quality.psnr, 10 * std::log10(65025 / (400.0 / 192)), 1e-9);
  }
}

TEST(Psnr, CountsChosenColumnsOnly) {
  const Size size{16, 12};
  LumaPlane b = flat_plane(size, 50);
  for (std::size_t y = 0; y < 12; ++y) b[y * 16 + 2] = 255;
  Columns columns(16, false);
  columns[3] = true;
  EXPECT_TRUE(std::isinf(measure({size, flat_plane(size, 50), b}, columns).psnr));
  columns[2] = true;
  EXPECT_NEAR(measure({size, flat_plane(size, 50), b}, columns).psnr, 10 * std::log10(65025 / (205.0 * 205 / 2)), 1e-9);
}

struct PlainPsnr {
  double plain, weighted;
};

// Pixel by pixel; the weight of a row is the cosine of its latitude.
PlainPsnr plain_psnr(Size size, const LumaPlane& a, const LumaPlane& b, const Columns& columns) {
  double squares = 0, count = 0, weighted = 0, weights = 0;
  for (int y = 0; y < size.height; ++y) {
    const double latitude = std::numbers::pi * ((y + 1.0) / size.height - 0.5);
    for (int x = 0; x < size.width; ++x) {
      const std::size_t at = std::size_t(y * size.width + x);
      const double square = columns[std::size_t(x)] ? std::pow(double(a[at]) - double(b[at]), 2) : 0;
      const double one = columns[std::size_t(x)] ? 1 : 0;
      squares += square, count += one;
      weighted += std::cos(latitude) * square, weights += std::cos(latitude) * one;
    }
  }
  return {20 * std::log10(255 / std::sqrt(squares / count)), 20 * std::log10(255 / std::sqrt(weighted / weights))};
}

TEST(Psnr, IsWhatTheDefinitionSaysForRandomPictures) {
  RandomSource random;
  for (const Size size : {Size{1, 2}, {2, 3}, {11, 11}, {13, 40}, {64, 32}}) {
    const LumaPlane a = random_plane(size, random), b = random_plane(size, random);
    Columns columns(std::size_t(size.width), false);
    for (std::size_t x = 0; x < columns.size(); ++x) columns[x] = x == 0 || random.between(0, 2) > 0;
    const Quality quality = measure({size, a, b}, columns), swapped = measure({size, b, a}, columns);
    const PlainPsnr wanted = plain_psnr(size, a, b, columns);
    EXPECT_NEAR(quality.psnr, wanted.plain, 1e-9) << size.width;
    EXPECT_NEAR(quality.weighted_psnr, wanted.weighted, 1e-9) << size.width;
    EXPECT_EQ(swapped.psnr, quality.psnr);
    EXPECT_EQ(swapped.weighted_psnr, quality.weighted_psnr);
  }
}

// A row of the greatest differences, of which 32 bits can't hold the sum.
TEST(Psnr, SumsDontOverflow) {
  const Size size{70000, 2};
  EXPECT_NEAR(measure_whole(size, flat_plane(size, 0), flat_plane(size, 255)).psnr, 0, 1e-9);
}

TEST(SeamColumns, LieWithinTheDegreesAroundAQuarterAndThreeQuarters) {
  const Columns first = seam_columns(360, 0, 10), second = seam_columns(360, 1, 10), both = either_column(first, second);
  for (std::size_t x = 0; x < 360; ++x) {
    EXPECT_EQ(first[x], x >= 79 && x <= 99) << x;
    EXPECT_EQ(second[x], x >= 259 && x <= 279) << x;
    EXPECT_EQ(both[x], first[x] || second[x]) << x;
  }
}

TEST(SeamColumns, AreWithinTheDegreesAtAnyWidthAndNone) {
  for (const int width : {64, 100, 512, 5760}) {
    for (const double half_width : {0.0, 0.25, 5.0, 90.0}) {
      for (const int seam : {0, 1}) {
        const Columns columns = seam_columns(width, seam, half_width);
        ASSERT_EQ(columns.size(), std::size_t(width));
        for (int x = 0; x < width; ++x) {
          const double longitude = 360.0 * (x + 1) / width, middle = seam == 0 ? 90 : 270;
          EXPECT_EQ(columns[std::size_t(x)], longitude >= middle - half_width && longitude <= middle + half_width)
              << width << " " << half_width << " " << x;
        }
      }
    }
  }
}

}  // namespace
}  // namespace biseam::tool
