#include "calibrate/solve.hpp"

#include <gtest/gtest.h>

#include "tool/calibrate/matches.hpp"

namespace biseam::calibrate {
namespace {

TEST(Solve, FarThingsGiveBackTheTurnAndTheScale) {
  const Values truth = some_values();
  Values guess = truth;
  guess[kYaw] = guess[kPitch] = guess[kRoll] = 0;
  guess[kScale] += 0.01;
  const Problem problem{kFrame, see(truth, 0), 1, wide_prior(truth)};
  const Solution solution = solve(problem, guess, std::vector<Ground>(1), {20, 0.01, 0.1});
  EXPECT_NEAR(solution.values[kYaw], truth[kYaw], 0.02);
  EXPECT_NEAR(solution.values[kPitch], truth[kPitch], 0.02);
  EXPECT_NEAR(solution.values[kRoll], truth[kRoll], 0.01);
  for (const Remainder& remainder : solution.remainders) {
    EXPECT_LT(std::abs(remainder.off.t), 0.5);
    EXPECT_LT(std::abs(remainder.off.b), 0.5);
  }
}

TEST(Solve, GroundIsToldFromTurn) {
  const Values truth = some_values();
  const Problem problem{kFrame, see(truth, 12), 1, wide_prior(truth)};
  const Solution solution = solve(problem, truth, {{0, 6, 0}}, {2, 0.1, 0.3});
  EXPECT_NEAR(solution.values[kPitch], truth[kPitch], 0.06);
  EXPECT_GT(solution.grounds[0].y, 8);
}

// A camera on a tripod takes the same picture again and again, with the same errors: it knows no more than from the first.
TEST(Solve, WhatStandsStillTellsOnce) {
  constexpr int kPairs = 20;
  const Values truth = some_values();
  const Problem once{kFrame, see(truth, 0), 1, wide_prior(truth)};
  Problem often = once;
  often.pairs = kPairs;
  for (int pair = 1; pair < kPairs; ++pair) {
    for (Match match : once.matches) {
      match.pair = pair;
      often.matches.push_back(match);
    }
  }
  const Solution first = solve(once, truth, std::vector<Ground>(1), {1, 0.1, 0.1});
  const Solution last = solve(often, truth, std::vector<Ground>(kPairs), {1, 0.1, 0.1});
  EXPECT_GT(last.scatter.alike, 0.7 * kPairs);
  for (const int p : {kYaw, kPitch, kRoll}) {
    const double ratio = std::sqrt(last.covariance(p, p) / first.covariance(p, p));
    EXPECT_GT(ratio, 0.7) << "parameter " << p;
    EXPECT_LT(ratio, 1.4) << "parameter " << p;
  }
}

TEST(Solve, HeldValuesStay) {
  const Values truth = some_values();
  Problem problem{kFrame, see(truth, 0), 1, wide_prior(truth)};
  for (const int p : {kScale, kK1, kK2}) problem.prior.deviations[std::size_t(p)] = kHeld;
  Values guess = truth;
  guess[kScale] += 0.002;
  const Solution solution = solve(problem, guess, std::vector<Ground>(1), {20, 0.01, 0.1});
  for (const std::size_t p : {kScale, kK1, kK2}) EXPECT_EQ(solution.values[p], guess[p]);
}

// However far out a rim is expected, the radius still grows there: where it hardly does, any angle would do for what is seen.
TEST(Solve, RadiiGrowUpToTheRim) {
  Values truth = some_values();
  truth[kK1] = -0.06;
  truth[kK2] = truth[kK3] = 0;
  Problem problem{kFrame, see(truth, 0), 1, wide_prior(truth)};
  for (const int p : {kK1, kK2, kK3}) problem.prior.deviations[std::size_t(p)] = kHeld;
  problem.prior.values[kRim] = 140;
  problem.prior.deviations[kRim] = 0.5;
  const Solution solution = solve(problem, truth, std::vector<Ground>(1), {1, 0.1, 0.1});
  const double rim = solution.values[kRim] * kDegree;
  EXPECT_GT(rim, 1.1 * truth[kRim] * kDegree);
  for (const Lens& lens : camera_of(solution.values, kFrame).lens) {
    EXPECT_GT(radius_slope(lens, rim), 0.2 * radius(lens, rim) / rim);
  }
}

TEST(Solve, BothLensesBendAlikeAtTheRim) {
  Values truth = some_values();
  truth[kK3] = -0.003;
  Problem problem{kFrame, see(truth, 0), 1, wide_prior(some_values())};
  for (const int p : {kScale, kK1, kK2}) problem.prior.deviations[std::size_t(p)] = kHeld;
  const Solution solution = solve(problem, some_values(), std::vector<Ground>(1), {20, 0.01, 0.1});
  EXPECT_NEAR(solution.values[kK3], truth[kK3], 2e-4);
  EXPECT_LT(solution.scatter.noise, 0.2);
}

// Between a turn and a ground below half a ring, steps are long and gain little each.
TEST(Solve, GoesOnUntilItStandsStill) {
  const Values truth = some_values();
  std::vector<Match> lower;
  for (const Match& match : see(truth, 3)) {
    if (remainders_of(truth, kFrame, {match})[0].at.t > 0) lower.push_back(match);
  }
  Problem problem{kFrame, lower, 1, wide_prior(truth)};
  problem.prior.down = {0, 1, 0};
  const Solution once = solve(problem, truth, {{0, 1, 0}}, {0.1, 0.1, 0.3});
  const Solution again = solve(problem, once.values, once.grounds, once.scatter);
  for (std::size_t p = 0; p < kParameters; ++p) {
    const double deviation = std::sqrt(once.covariance(int(p), int(p)));
    EXPECT_NEAR(again.values[p], once.values[p], 0.1 * deviation) << "parameter " << p;
  }
  EXPECT_NEAR(again.grounds[0].y, once.grounds[0].y, 0.05);
}

}  // namespace
}  // namespace biseam::calibrate
