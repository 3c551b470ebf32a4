#include "calibrate/solve.hpp"

#include <gtest/gtest.h>

#include "tool/calibrate/world.hpp"

namespace biseam::calibrate {
namespace {

constexpr Frame kFrame{960, 960, {90, 270}};

Values some_values() {
  Values values{};
  values[kScale] = std::log(275.0);
  values[kScaleRatio] = 0.01;
  values[kK1] = -0.02;
  values[kK2] = 0.001;
  values[kK1Apart] = 0.002;
  values[kCx0] = 478;
  values[kCy0] = 481;
  values[kCx1] = 483;
  values[kCy1] = 476;
  values[kYaw] = 1.5;
  values[kPitch] = -2;
  values[kRoll] = 0.7;
  values[kRim] = 99;
  return values;
}

// Far things all round, and such on a ground that displaces what is straight below by `parallax` pixels of a 3840 panorama.
std::vector<Match> see(const Values& values, double parallax) {
  const Camera camera = camera_of(values, kFrame);
  const Projector lens[2] = {Projector(camera, 0), Projector(camera, 1)};
  std::vector<Match> matches;
  for (int i = 0; i < 400; ++i) {
    const double t = i * 2.399963, b = 0.1 * (2 * hashed(i, 1, 2) - 1);
    const double shift = parallax / kPixelsPerRadian * std::max(0.0, std::cos(b) * std::sin(t));
    Match match{0, {}};
    for (int k = 0; k < 2; ++k) {
      const ImagePoint at = lens[k].project(ring_direction(t, b + (k == 0 ? 0.5 : -0.5) * shift));
      match.at[k] = {at.x + 0.05 * (hashed(i, k, 3) - 0.5), at.y + 0.05 * (hashed(i, k, 4) - 0.5)};
    }
    matches.push_back(match);
  }
  return matches;
}

Prior wide_prior(const Values& middle) {
  Prior prior;
  prior.values = middle;
  prior.deviations = {0.05, 0.01, 0.02, 0.003, 0.002, 0.0004, 0.3, 0.3, 0.3, 0.3, 4, 4, 4, 3};
  return prior;
}

TEST(Solve, DerivativesAreThoseOfTheProjection) {
  const Values values = some_values();
  const std::vector<Match> matches = see(values, 8);
  const std::vector<Slopes> slopes = slopes_of(values, kFrame, matches);
  for (std::size_t p = 0; p < kRim; ++p) {
    const double step = 1e-3 * kSteps[p];
    Values low = values, high = values;
    low[p] -= step;
    high[p] += step;
    const std::vector<Remainder> below = remainders_of(low, kFrame, matches), above = remainders_of(high, kFrame, matches);
    for (std::size_t i = 0; i < matches.size(); ++i) {
      const double t = (above[i].off.t - below[i].off.t) / (2 * step), b = (above[i].off.b - below[i].off.b) / (2 * step);
      const double unit = 1 / kSteps[p];
      EXPECT_NEAR(slopes[i].t[p], t, 0.002 * unit) << "parameter " << p;
      EXPECT_NEAR(slopes[i].b[p], b, 0.002 * unit) << "parameter " << p;
    }
  }
}

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

TEST(Solve, NothingIsBeyondInfinity) {
  const Scatter scatter{0.5, 0.1, 0.9};
  EXPECT_GT(share_of({0, 10}, 0, scatter).near, 0.9);
  EXPECT_LT(share_of({0, -10}, 0, scatter).good(), 0.01);
  EXPECT_NEAR(near_pull(10, 1, scatter).slope, 0, 1e-9);
  EXPECT_LT(near_pull(-1, 1, scatter).slope, -1);  // the cost falls towards infinity
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

}  // namespace
}  // namespace biseam::calibrate
