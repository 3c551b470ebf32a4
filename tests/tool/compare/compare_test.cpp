#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "compare/metrics.hpp"
#include "picture/write_picture.hpp"
#include "support/random_source.hpp"
#include "tool/support/command_line.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using test::run_tool;
using test::ScratchFolder;

using Plane = std::vector<std::uint8_t>;

Quality whole(Size size, const Plane& a, const Plane& b) { return measure({size, a, b}, all_columns(size.width)); }

Plane flat(Size size, int code) { return Plane(std::size_t(size.width * size.height), std::uint8_t(code)); }

Plane random_plane(Size size, test::RandomSource& random) {
  Plane plane = flat(size, 0);
  for (std::uint8_t& code : plane) code = random.byte();
  return plane;
}

TEST(Psnr, OfIdenticalPicturesIsInfinite) {
  const Quality quality = whole({16, 12}, flat({16, 12}, 7), flat({16, 12}, 7));
  EXPECT_TRUE(std::isinf(quality.psnr) && quality.psnr > 0);
  EXPECT_TRUE(std::isinf(quality.weighted_psnr) && quality.weighted_psnr > 0);
  EXPECT_EQ(quality.ssim, 1);
}

TEST(Psnr, OfADifferenceOfTenEverywhere) {
  const Quality quality = whole({16, 12}, flat({16, 12}, 100), flat({16, 12}, 110));
  EXPECT_NEAR(quality.psnr, 28.1308036, 1e-6);
  EXPECT_NEAR(quality.weighted_psnr, 28.1308036, 1e-6);
}

TEST(Psnr, OfBlackAgainstWhiteIsZero) { EXPECT_NEAR(whole({16, 12}, flat({16, 12}, 0), flat({16, 12}, 255)).psnr, 0, 1e-12); }

TEST(Psnr, WeightsARowByTheCosineOfItsLatitude) {
  const Size size{16, 12};
  for (const int row : {0, 5, 9}) {
    Plane b = flat(size, 50);
    b[std::size_t(row) * 16 + 3] = 70;
    double weights = 0;
    for (int y = 0; y < 12; ++y) weights += 16 * std::cos(std::numbers::pi * ((y + 1) / 12.0 - 0.5));
    const double square_mean = 400 * std::cos(std::numbers::pi * ((row + 1) / 12.0 - 0.5)) / weights;
    const Quality quality = whole(size, flat(size, 50), b);
    EXPECT_NEAR(quality.weighted_psnr, 10 * std::log10(65025 / square_mean), 1e-9);
    EXPECT_NEAR(quality.psnr, 10 * std::log10(65025 / (400.0 / 192)), 1e-9);
  }
}

TEST(Psnr, CountsChosenColumnsOnly) {
  const Size size{16, 12};
  Plane b = flat(size, 50);
  for (std::size_t y = 0; y < 12; ++y) b[y * 16 + 2] = 255;
  Columns columns(16, false);
  columns[3] = true;
  EXPECT_TRUE(std::isinf(measure({size, flat(size, 50), b}, columns).psnr));
  columns[2] = true;
  EXPECT_NEAR(measure({size, flat(size, 50), b}, columns).psnr, 10 * std::log10(65025 / (205.0 * 205 / 2)), 1e-9);
}

TEST(Ssim, OfFlatPicturesComparesTheirMeans) {
  EXPECT_NEAR(whole({20, 20}, flat({20, 20}, 100), flat({20, 20}, 110)).ssim, 22006.5025 / 22106.5025, 1e-9);
}

// As the definition says, window by window, moments about the mean, weights from two dimensions at once.
double plain_ssim(Size size, const Plane& a, const Plane& b, const Columns& columns) {
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
    const Plane a = random_plane(size, random);
    Plane b = random_plane(size, random);
    for (std::size_t i = 0; i < b.size(); ++i) b[i] = std::uint8_t((3 * a[i] + b[i]) / 4);
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
  EXPECT_TRUE(std::isnan(measure({size, flat(size, 1), flat(size, 1)}, columns).ssim));
}

TEST(SeamColumns, LieWithinTheDegreesAroundAQuarterAndThreeQuarters) {
  const Columns first = seam_columns(360, 0, 10), second = seam_columns(360, 1, 10), both = either_column(first, second);
  for (std::size_t x = 0; x < 360; ++x) {
    EXPECT_EQ(first[x], x >= 79 && x <= 99) << x;
    EXPECT_EQ(second[x], x >= 259 && x <= 279) << x;
    EXPECT_EQ(both[x], first[x] || second[x]) << x;
  }
}

std::string grey_file(const ScratchFolder& folder, const std::string& name, Size size, int code) {
  Nv12 picture(size.width, size.height);
  picture.luma.assign(picture.luma.size(), std::uint8_t(code));
  picture.chroma.assign(picture.chroma.size(), 128);
  write_picture(folder / name, picture);
  return folder / name;
}

TEST(CompareCommand, PrintsInfForIdenticalPictures) {
  const ScratchFolder folder;
  const std::string a = grey_file(folder, "a.png", {64, 32}, 90);
  const test::Outcome outcome = run_tool({"compare", a, a});
  EXPECT_EQ(outcome.exit_code, 0);
  EXPECT_NE(outcome.output.find("whole picture        inf         inf   1.0000\n"), std::string::npos) << outcome.output;
}

TEST(CompareCommand, PrintsJson) {
  const ScratchFolder folder;
  const std::string a = grey_file(folder, "a.png", {64, 32}, 100), b = grey_file(folder, "b.png", {64, 32}, 110);
  const std::string same = run_tool({"compare", "--json", a, a}).output, other = run_tool({"compare", "--json", a, b}).output;
  EXPECT_NE(same.find("\"whole\": {\"psnr\": null, \"weighted_psnr\": null, \"ssim\": 1.000000}"), std::string::npos) << same;
  EXPECT_NE(other.find("\"seam1\": {\"psnr\": 28.130804, \"weighted_psnr\": 28.130804, \"ssim\": "), std::string::npos)
      << other;
}

TEST(CompareCommand, RefusesPicturesOfDifferentSizes) {
  const ScratchFolder folder;
  const std::string a = grey_file(folder, "a.png", {64, 32}, 90), b = grey_file(folder, "b.png", {64, 34}, 90);
  const test::Outcome outcome = run_tool({"compare", a, b});
  EXPECT_EQ(outcome.exit_code, 3);
  EXPECT_EQ(outcome.message, b + ": 64x34 pixels, but " + a + " has 64x32");
  EXPECT_EQ(outcome.output, "");
}

TEST(CompareCommand, RefusesPicturesSmallerThanAWindow) {
  const ScratchFolder folder;
  const std::string a = grey_file(folder, "a.png", {64, 10}, 90);
  EXPECT_EQ(run_tool({"compare", a, a}).exit_code, 3);
}

TEST(CompareCommand, LeastPsnrDecidesTheExitCode) {
  const ScratchFolder folder;
  const std::string a = grey_file(folder, "a.png", {64, 32}, 100), b = grey_file(folder, "b.png", {64, 32}, 110);
  EXPECT_EQ(run_tool({"compare", a, b, "--least-psnr", "28.1"}).exit_code, 0);
  EXPECT_EQ(run_tool({"compare", a, b, "--least-psnr", "28.2"}).exit_code, 1);
  EXPECT_EQ(run_tool({"compare", a, a, "--least-psnr", "99"}).exit_code, 0);
}

}  // namespace
}  // namespace biseam::tool
