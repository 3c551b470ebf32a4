#include "calibrate/scatter.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "support/random_source.hpp"

namespace biseam::calibrate {
namespace {

constexpr Scatter kScatter{0.5, 0.2, 0.3};
constexpr Scatter kScattered{0.5, 0.2, 0.3, false, 1, true};

// The wrong ones lie over an area, and the others are somewhere.
TEST(Scatter, LikelihoodsAreADensity) {
  constexpr double kStep = 0.1;
  for (const Scatter& scatter : {kScatter, kScattered}) {
    for (const double parallax : {0.0, 12.0}) {
      double good = 0;
      for (double t = -6 - 0.2 * kMostNear; t < 6; t += kStep) {
        for (double b = -10; b < kMostNear + 10; b += kStep) {
          const double density = std::exp(log_likelihood({{t, b}, 0.8, 0.6, parallax, -0.2}, scatter));
          good += (density - scatter.wrong / kWrongArea) * kStep * kStep;
        }
      }
      EXPECT_NEAR(good, 1 - scatter.wrong, 1e-4);
    }
  }
}

// Matches that scatter as it says: so many of each kind there are, so large are the shares together.
TEST(Scatter, SharesAddUpToWhatThereIs) {
  constexpr int kMatches = 40000;
  constexpr double kParallax = 9, kNoise = 0.7;
  test::RandomSource random;
  std::mt19937 state(random.word());
  std::normal_distribution<double> normal(0, kNoise);
  std::uniform_real_distribution<double> even(0, 1);
  double near = 0, said_near = 0, right = 0, said_right = 0;
  for (int i = 0; i < kMatches; ++i) {
    const bool is_wrong = even(state) < kScatter.wrong, is_near = even(state) < kScatter.near;
    Residual off{normal(state), normal(state)};
    if (is_wrong) {
      off = {60 * (even(state) - 0.5), 60 * (even(state) - 0.3)};
    } else {
      off.b += is_near ? kMostNear * even(state) : kParallax;
      right += 1;
      near += is_near;
    }
    const Share share = share_of({off, kNoise, kNoise, kParallax}, kScatter);
    said_near += share.near;
    said_right += share.good();
    EXPECT_LE(share.good(), 1);
    EXPECT_GE(std::min({share.far, share.ground, share.near}), 0);
  }
  // Counts of as many draws are off by less than five of their deviations; a thirtieth of what is on the ground is taken for
  // something far that is not there, and the near ones around the ground for that.
  const double slack = 5 * std::sqrt(kMatches) / 2;
  EXPECT_NEAR(said_right, right, slack);
  EXPECT_NEAR(said_near, near, slack + 0.03 * kMatches);
}

TEST(Scatter, NothingIsBeyondInfinity) {
  constexpr Scatter kMostlyNear{0.5, 0.1, 0.9};
  EXPECT_GT(share_of({{0, 10}, 0.5, 0.5, 0}, kMostlyNear).near, 0.9);
  EXPECT_LT(share_of({{0, -10}, 0.5, 0.5, 0}, kMostlyNear).good(), 0.01);
}

TEST(Scatter, WhatIsInDoubtMayBeFurtherOff) {
  constexpr Scatter kFewNear{0.5, 0.1, 0.05};
  EXPECT_LT(share_of({{0, -4}, 0.5, 0.5, 0}, kFewNear).good(), 0.1);
  EXPECT_GT(share_of({{0, -4}, 0.5, 4, 0}, kFewNear).good(), 0.9);
}

TEST(Scatter, GroundIsWhereItsParallaxIs) {
  const Share on_ground = share_of({{0.1, 14}, 0.5, 0.5, 14}, kScatter), beyond = share_of({{0.1, 0}, 0.5, 0.5, 14}, kScatter);
  EXPECT_GT(on_ground.ground, 0.9);
  EXPECT_LT(on_ground.far, 1e-6);
  EXPECT_GT(beyond.far, 0.4);
  EXPECT_LT(beyond.ground, 1e-6);
}

// Near things lie along a slant, where lens 1 stands beside the axis.
TEST(Scatter, NearThingsAreDisplacedAlongToo) {
  EXPECT_GT(share_of({{-2.5, 10}, 0.2, 0.2, 0, -0.25}, kScattered).near, 0.98);
  EXPECT_LT(share_of({{0, 10}, 0.2, 0.2, 0, -0.25}, kScattered).good(), 0.01);
  EXPECT_GT(share_of({{-2.5, 10}, 0.2, 0.2, 10, -0.25}, kScattered).ground, 0.5);
  EXPECT_GT(share_of({{0, 0.1}, 0.2, 0.2, 10, -0.25}, kScattered).far, 0.1);
}

// The rarer the nearer, as long as any is.
TEST(Scatter, ScatteredThingsAreRarerTheNearer) {
  double before = 1e9;
  for (const double b : {1.0, 5.0, 20.0}) {
    const double density = std::exp(log_likelihood({{0, b}, 0.2, 0.2, 0}, kScattered));
    EXPECT_LT(density, 0.6 * before) << b;
    before = density;
  }
}

// The cost of what is near, at b, is -share log(how likely noise alone leaves it between infinity and so near): the sum of a
// few, each as much as it is likely here.
double near_cost(double b, double here, double noise, double share, const std::vector<double>& widths) {
  const auto below = [&](double z) { return 0.5 * std::erfc(-z / std::sqrt(2)); };
  const auto likely = [&](double at, double width) {  // nothing is taken to be too near
    return (below(at / noise) - (width < kMostNear ? below((at - width) / noise) : 0)) / width;
  };
  double all = 0, cost = 0;
  for (const double width : widths) all += likely(here, width);
  for (const double width : widths) cost -= likely(here, width) / all * std::log(likely(b, width));
  return share * cost;
}

TEST(Scatter, NearPullIsTheSlopeOfTheCost) {
  constexpr double kStep = 1e-4;
  for (const Scatter& scatter : {kScatter, kScattered}) {
    const std::vector<double> widths = scatter.scattered ? std::vector{2.0, 9.0, kMostNear} : std::vector{kMostNear};
    for (const double noise : {0.3, 1.0, 2.5}) {
      for (double z = -7.9; z < 6; z += 0.1) {
        const double b = z * noise, share = 0.6, step = kStep * noise;
        const auto cost = [&](double at) { return near_cost(at, b, noise, share, widths); };
        const Pull pull = near_pull(b, noise, share, scatter);
        EXPECT_NEAR(pull.slope, (cost(b + step) - cost(b - step)) / (2 * step), 1e-5 * (1 + std::abs(pull.slope))) << z;
        EXPECT_NEAR(pull.stiffness, (cost(b + step) - 2 * cost(b) + cost(b - step)) / (step * step), 1e-4 / (noise * noise))
            << z;
      }
    }
  }
}

// Where the likelihood is too small for a number, slope and stiffness go on as they were.
TEST(Scatter, NearPullGoesOnFarBeyondInfinity) {
  for (const double z : {-8.001, -20.0, -1e4}) {
    const Pull pull = near_pull(z * 0.5, 0.5, 1, kScatter);
    EXPECT_NEAR(pull.slope, z / 0.5, 0.02 * -z / 0.5);
    EXPECT_GE(pull.stiffness, 0);
    EXPECT_LE(pull.stiffness, 1 / (0.5 * 0.5));
  }
}

}  // namespace
}  // namespace biseam::calibrate
