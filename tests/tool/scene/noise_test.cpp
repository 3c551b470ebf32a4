// Draws are the same on every machine, so these samples either pass everywhere or nowhere.  Bounds are six standard
// deviations of what independent draws would give.
#include "scene/noise.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <set>

#include "support/random_source.hpp"

namespace biseam::scene {
namespace {

TEST(Scrambled, KeepsDifferentNumbersDifferent) {
  std::set<std::uint64_t> seen;
  for (std::uint64_t n = 0; n < 20000; ++n) {
    seen.insert(scrambled(n));
    seen.insert(scrambled(n << 40 | 0x8000000000u));
  }
  EXPECT_EQ(seen.size(), 40000u);
}

// A change of one bit changes each other bit as often as not: of 64 x 2000 bits half, give or take sqrt(128000) / 2.
TEST(Scrambled, EveryBitMovesHalfOfTheOthers) {
  constexpr int kDraws = 2000;
  for (int bit = 0; bit < 64; ++bit) {
    int moved = 0;
    for (std::uint64_t n = 0; n < kDraws; ++n) {
      moved += std::popcount(scrambled(n) ^ scrambled(n ^ (std::uint64_t(1) << bit)));
    }
    EXPECT_NEAR(moved, 32 * kDraws, 6 * std::sqrt(64.0 * kDraws) / 2) << bit;
  }
}

// 40 x 40 x 25 cells around the origin, where some of the indices are negative.
template <class Visit>
void for_each_cell(Visit visit) {
  for (std::int64_t i = -20; i < 20; ++i) {
    for (std::int64_t j = -20; j < 20; ++j) {
      for (std::int64_t k = -12; k < 13; ++k) visit(i, j, k);
    }
  }
}
constexpr double kCells = 40 * 40 * 25;

TEST(Chance, IsUniform) {
  std::array<double, 32> bins{};
  double sum = 0;
  for_each_cell([&](std::int64_t i, std::int64_t j, std::int64_t k) {
    const double value = chance(i, j, k);
    ASSERT_TRUE(value >= 0 && value < 1);
    bins[std::size_t(value * 32)] += 1;
    sum += value;
  });
  EXPECT_NEAR(sum / kCells, 0.5, 6 / std::sqrt(12 * kCells));
  double chi_square = 0;
  for (const double count : bins) chi_square += std::pow(count - kCells / 32, 2) / (kCells / 32);
  EXPECT_NEAR(chi_square, 31, 6 * std::sqrt(2 * 31.0));
}

// The product of two independent deviations has a standard deviation of 1 / 12.
TEST(Chance, OfNeighboursIsIndependent) {
  double by_i = 0, by_j = 0, by_k = 0, exchanged = 0;
  for_each_cell([&](std::int64_t i, std::int64_t j, std::int64_t k) {
    const double own = chance(i, j, k) - 0.5;
    by_i += own * (chance(i + 1, j, k) - 0.5);
    by_j += own * (chance(i, j + 1, k) - 0.5);
    by_k += own * (chance(i, j, k + 1) - 0.5);
    exchanged += own * (chance(j + 100, i + 100, k) - 0.5);
  });
  for (const double sum : {by_i, by_j, by_k, exchanged}) EXPECT_NEAR(sum, 0, 6 * std::sqrt(kCells) / 12);
}

TEST(Chance, WithoutALastIndexIsThatOfZero) { EXPECT_EQ(chance(7, -3), chance(7, -3, 0)); }

TEST(Cloudy, OfOneOctaveIsTheCornersChanceAndBetweenThemSmooth) {
  EXPECT_EQ(cloudy({3, -2, 5}, 1), chance(3, -2, 5));
  EXPECT_EQ(cloudy({-1, 0, -7}, 1), chance(-1, 0, -7));
  double middle = 0;
  for (int corner = 0; corner < 8; ++corner) middle += chance(-4 + (corner & 1), corner >> 1 & 1, 9 + (corner >> 2)) / 8;
  EXPECT_NEAR(cloudy({-3.5, 0.5, 9.5}, 1), middle, 1e-12);
  const double share = 0.25 * 0.25 * (3 - 2 * 0.25);
  EXPECT_NEAR(cloudy({0.25, 0, 0}, 1), chance(0, 0, 0) + share * (chance(1, 0, 0) - chance(0, 0, 0)), 1e-12);
}

TEST(Cloudy, OctavesAreHalvedInHeightAndSizeEach) {
  const Vec3 at{0.3, -1.7, 12.2}, next = at * 2.03 + Vec3{17.1, 9.2, 4.7};
  EXPECT_NEAR(cloudy(at, 2), (cloudy(at, 1) + 0.5 * cloudy(next, 1)) / 1.5, 1e-12);
  EXPECT_NEAR(cloudy(at, 4), (cloudy(at, 1) + 0.875 * cloudy(next, 3)) / 1.875, 1e-12);
}

// Between two corners that differ by at most 1 the slope is at most 1.5, in each of three directions.
TEST(Cloudy, IsAShareThatChangesNoFasterThanItsGrains) {
  test::RandomSource random;
  const auto any = [&] { return double(random.real_between(-50, 50)); };
  for (const int octaves : {1, 3, 5}) {
    double slope = 0, weight = 0;
    for (int octave = 0; octave < octaves; ++octave) slope += 1.5 * std::pow(2.03 / 2, octave), weight += std::pow(0.5, octave);
    for (int n = 0; n < 5000; ++n) {
      const Vec3 at{any(), any(), any()}, step = Vec3{any(), any(), any()} * 1e-4;
      const double here = cloudy(at, octaves), there = cloudy(at + step, octaves);
      ASSERT_TRUE(here >= 0 && here <= 1) << here;
      const double way = std::abs(step.x) + std::abs(step.y) + std::abs(step.z);
      ASSERT_LE(std::abs(here - there), slope / weight * way + 1e-12);
    }
  }
}

constexpr int kPairs = 50000;

// Sums over n draws of x, x^2 - 1, x^3, x^4 - 3 and of products have variances n, 2n, 15n, 96n and n.
TEST(NormalPair, HasTheMomentsOfIndependentNormalNumbers) {
  for (const std::uint64_t seed : {std::uint64_t(0), std::uint64_t(1), ~std::uint64_t(0)}) {
    double sums[2][4] = {}, product = 0, next = 0, other_seed = 0, squares = 0;
    for (std::uint64_t n = 0; n < kPairs; ++n) {
      const NormalPair pair = normal_pair(seed, n);
      for (int which = 0; which < 2; ++which) {
        const double x = which == 0 ? pair.first : pair.second;
        ASSERT_TRUE(std::isfinite(x));
        sums[which][0] += x, sums[which][1] += x * x - 1, sums[which][2] += x * x * x, sums[which][3] += x * x * x * x - 3;
      }
      product += pair.first * pair.second;
      next += pair.second * normal_pair(seed, n + 1).first;
      other_seed += pair.first * normal_pair(seed + 1, n).first;
      squares += (pair.first * pair.first - 1) * (pair.second * pair.second - 1);  // of variance 4
    }
    const double root = 6 * std::sqrt(double(kPairs));
    for (const auto& sum : sums) {
      EXPECT_NEAR(sum[0], 0, root);
      EXPECT_NEAR(sum[1], 0, root * std::sqrt(2));
      EXPECT_NEAR(sum[2], 0, root * std::sqrt(15));
      EXPECT_NEAR(sum[3], 0, root * std::sqrt(96));
    }
    EXPECT_NEAR(product, 0, root);
    EXPECT_NEAR(next, 0, root);
    EXPECT_NEAR(other_seed, 0, root);
    EXPECT_NEAR(squares, 0, 2 * root);
  }
}

TEST(NormalPair, IsDistributedAsTheErrorFunctionSays) {
  for (const double bound : {-2.0, -1.0, -0.25, 0.0, 0.5, 1.5, 2.5}) {
    const double share = 0.5 * std::erfc(-bound / std::sqrt(2));
    int below = 0;
    for (std::uint64_t n = 0; n < kPairs; ++n) {
      const NormalPair pair = normal_pair(11, n);
      below += (pair.first < bound) + (pair.second < bound);
    }
    EXPECT_NEAR(below, 2 * kPairs * share, 6 * std::sqrt(2 * kPairs * share * (1 - share))) << bound;
  }
}

}  // namespace
}  // namespace biseam::scene
