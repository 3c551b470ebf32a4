#include "compare/ssim.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "tool/compare/luma_planes.hpp"

namespace biseam::tool {
namespace {

using namespace test;

TEST(Ssim, OfFlatPicturesComparesTheirMeans) {
  EXPECT_NEAR(measure_whole({20, 20}, flat_plane({20, 20}, 100), flat_plane({20, 20}, 110)).ssim, 22006.5025 / 22106.5025,
              1e-9);
}

// As the definition says, window by window, moments about the mean, weights from two dimensions at once.
double plain_ssim(Size size, const LumaPlane& a, const LumaPlane& b, const Columns& columns) {
  double total = 0, count = 0;
  for (int cy = 5; cy < size.height - 5; ++cy) {
    for (int cx = 5; cx < size.width - 5; ++cx) {
      if (!columns[std::size_t(cx)]) continue;
      double w_sum = 0, ma = 0, mb = 0, va = 0, vb = 0, cov = 0;
      for (int pass = 0; pass < 2; ++pass) {
        for (int dy = -5; dy <= 5; ++dy) {
          for (int dx = -5; dx <= 5; ++dx) {
            const double w = std::exp(-(dx * dx + dy * dy) / 4.5);
            const std::size_t at = std::size_t((cy + dy) * size.width + cx + dx);
            if (pass == 0) {
              w_sum += w, ma += w * a[at], mb += w * b[at];
            } else {
              va += w * (a[at] - ma) * (a[at] - ma), vb += w * (b[at] - mb) * (b[at] - mb),
                  cov += w * (a[at] - ma) * (b[at] - mb);
            }
          }
        }
        if (pass == 0) ma /= w_sum, mb /= w_sum;
      }
      va /= w_sum, vb /= w_sum, cov /= w_sum;
      total += (2 * ma * mb + 6.5025) * (2 * cov + 58.5225) / ((ma * ma + mb * mb + 6.5025) * (va + vb + 58.5225));
      ++count;
    }
  }
  return total / count;
}

TEST(Ssim, IsWhatTheDefinitionSaysForRandomPictures) {
  test::RandomSource random;
  for (const Size size : {Size{11, 11}, {12, 17}, {37, 13}, {40, 31}}) {
    const LumaPlane a = random_plane(size, random);
    LumaPlane b = random_plane(size, random);
    for (std::size_t i = 0; i < b.size(); ++i) b[i] = (3 * a[i] + b[i]) / 4;
    Columns columns = all_columns(size.width);
    EXPECT_NEAR(measure({size, a, b}, columns).ssim, plain_ssim(size, a, b, columns), 1e-9);
    for (std::size_t x = 0; x < columns.size(); x += 2) columns[x] = false;
    EXPECT_NEAR(measure({size, a, b}, columns).ssim, plain_ssim(size, a, b, columns), 1e-9);
  }
}

TEST(Ssim, IsNoNumberWhereNoWindowCounts) {
  const Size size{16, 12};
  Columns columns(16, false);
  columns[4] = true;
  EXPECT_TRUE(std::isnan(measure({size, flat_plane(size, 1), flat_plane(size, 1)}, columns).ssim));
}

TEST(Ssim, OfAPictureWithItselfIsOneAndWithItsNegativeBelowZero) {
  RandomSource random;
  const Size size{24, 15};
  const LumaPlane a = random_plane(size, random);
  LumaPlane negative = a;
  for (float& code : negative) code = 255 - code;
  EXPECT_NEAR(structural_similarity({size, a, a}, all_columns(24)), 1, 1e-12);
  EXPECT_LT(structural_similarity({size, a, negative}, all_columns(24)), -0.5);
}

TEST(Ssim, DoesntDependOnTheOrderOrOnTurningBothUpsideDown) {
  RandomSource random;
  const Size size{19, 23};
  LumaPlane a = random_plane(size, random), b = random_plane(size, random);
  const double upright = structural_similarity({size, a, b}, all_columns(19));
  EXPECT_NEAR(structural_similarity({size, b, a}, all_columns(19)), upright, 1e-12);
  std::reverse(a.begin(), a.end());
  std::reverse(b.begin(), b.end());
  EXPECT_NEAR(structural_similarity({size, a, b}, all_columns(19)), upright, 1e-12);
}

// A pixel is seen by the windows that reach it and by no other.
TEST(Ssim, AWindowReachesFivePixelsAndNoFurther) {
  const Size size{40, 11};
  LumaPlane b = flat_plane(size, 60);
  b[5 * 40 + 20] = 200;
  for (int x = 5; x < 35; ++x) {
    Columns columns(40, false);
    columns[std::size_t(x)] = true;
    const double one = structural_similarity({size, flat_plane(size, 60), b}, columns);
    if (std::abs(x - 20) <= 5) {
      EXPECT_LT(one, 1 - 1e-6) << x;
    } else {
      EXPECT_NEAR(one, 1, 1e-12) << x;
    }
  }
}

TEST(Ssim, IsNoNumberWhereNoWindowFits) {
  for (const Size size : {Size{10, 40}, {40, 10}, {1, 1}}) {
    EXPECT_TRUE(std::isnan(structural_similarity({size, flat_plane(size, 1), flat_plane(size, 1)}, all_columns(size.width))));
  }
}

}  // namespace
}  // namespace biseam::tool
