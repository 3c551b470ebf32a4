#include "calibrate/explain.hpp"

#include <gtest/gtest.h>

#include <utility>

#include "tool/calibrate/matches.hpp"

namespace biseam::calibrate {
namespace {

Explanations explain_all(Problem problem) {
  problem.alike_error = 0.05;
  return explain(problem, problem.prior.values, in_turn);
}

TEST(Explain, NearGroundIsOne) {
  const Values truth = some_values();
  const Explanations found = explain_all({kFrame, see(truth, 12), 1, wide_prior(truth)});
  EXPECT_TRUE(found.is_ground());
  EXPECT_GT(found.better().grounds[0].y, 8);
  EXPECT_NEAR(found.better().values[kPitch], truth[kPitch], 0.06);
}

TEST(Explain, FarThingsNeedNoGround) {
  const Values truth = some_values();
  const Explanations found = explain_all({kFrame, see(truth, 0), 1, wide_prior(truth)});
  EXPECT_FALSE(found.is_ground());
  EXPECT_EQ(found.better().grounds[0].y, 0);
}

// As noise about what is far, or as near ones on the axis, they would move the seams.
TEST(Explain, ThingsAtAllDistancesShowWhereLens1Stands) {
  const Values truth = some_values();
  const double scale = across_scale(camera_of(truth, kFrame));
  for (const auto& [x, y] : {std::pair{0.0, 0.0}, {-0.25, 0.15}}) {
    Problem problem{kFrame, see_wood(truth, x, y), 1, wide_prior(truth)};
    Explanations found = explain_all(problem);
    const Explanations otherwise = found;
    ASSERT_TRUE(explain_scattered(problem, found));
    found = explain_again(problem, found, in_turn);
    ASSERT_TRUE(found.scattered);
    const Values& values = found.better().values;
    const cv::Mat1d covariance = covariance_of(found);
    const auto error = [&](const Values& of) { return seam_error(camera_of(truth, kFrame), camera_of(of, kFrame)); };
    EXPECT_LT(error(values), 0.03);
    if (x != 0) {
      EXPECT_LT(error(values), 0.5 * error(otherwise.better().values));
    }
    for (const int p : {kYaw, kPitch, kRoll}) {
      EXPECT_NEAR(values[std::size_t(p)], truth[std::size_t(p)], 3 * std::sqrt(covariance(p, p))) << "parameter " << p;
    }
    EXPECT_NEAR(values[kBesideX] * scale, x, 0.03);
    EXPECT_NEAR(values[kBesideY] * scale, y, 0.03);
    for (const double along : found.better().along) EXPECT_LT(std::abs(along), 1);
  }
}

TEST(Explain, GroundsAndFarThingsAreNotScattered) {
  const Values truth = some_values();
  for (const double parallax : {0.0, 1.5, 12.0}) {
    const Problem problem{kFrame, see(truth, parallax), 1, wide_prior(truth)};
    Explanations found = explain_all(problem);
    EXPECT_FALSE(explain_scattered(problem, found)) << parallax;
    EXPECT_EQ(found.better().values[kBesideX], 0);
  }
}

// Of what see() sees, the part below the horizon: above it is a clear sky.
std::vector<Match> see_below(const Values& values, double parallax) {
  std::vector<Match> below;
  for (const Match& match : see(values, parallax)) {
    const double t = remainders_of(values, kFrame, {match})[0].at.t;
    if (t > -0.1 && t < kPi + 0.1) below.push_back(match);
  }
  return below;
}

// A turn and the ground opposite explain nearly as much.
TEST(Explain, GroundNearByAFewPixelsLiesBelow) {
  const Values truth = some_values();
  for (const double parallax : {1.5, 3.0, 6.0}) {
    Problem problem{kFrame, see_below(truth, parallax), 1, wide_prior(truth)};
    problem.prior.down = {0, 1, 0};
    const Explanations found = explain_all(problem);
    EXPECT_TRUE(found.is_ground()) << parallax;
    const double deviation = std::sqrt(covariance_of(found)(kPitch, kPitch));
    EXPECT_NEAR(found.better().values[kPitch], truth[kPitch], 3 * deviation) << parallax;
    EXPECT_LT(deviation, 0.12) << parallax;
    EXPECT_NEAR(found.better().grounds[0].y, parallax, 1.5) << parallax;
  }
}

// Tiles too fine for the pictures match at random, and in each picture of a tripod's clip at the same places.  A ground beyond
// the rest of the ring and a turn would explain many of them.
TEST(Explain, BadPlacesMakeNoGround) {
  constexpr int kPairs = 3;
  const Values truth = some_values();
  std::vector<Match> matches = see(truth, 0);
  for (std::size_t i = 0; i < matches.size(); ++i) {
    Match& match = matches[i];
    const RingPoint at = remainders_of(truth, kFrame, {match})[0].at;
    if (at.t < -0.5 || at.t > 1.2) continue;
    for (cv::Point2d& place : match.at) {
      place.x += 1.5 * (hashed(int(i), 5, int(place.x)) - 0.7);
      place.y += 1.5 * (hashed(int(i), 6, int(place.y)) - 0.7);
    }
    match.t_doubt = match.b_doubt = 4;
  }
  const std::size_t once = matches.size();
  for (int pair = 1; pair < kPairs; ++pair) {
    for (std::size_t i = 0; i < once; ++i) {
      matches.push_back(matches[i]);
      matches.back().pair = pair;
    }
  }
  const Explanations found = explain_all({kFrame, matches, kPairs, wide_prior(truth)});
  EXPECT_FALSE(found.is_ground());
  EXPECT_NEAR(found.better().values[kYaw], truth[kYaw], 0.05);
  EXPECT_NEAR(found.better().values[kPitch], truth[kPitch], 0.05);
}

// Where the other explanation is not ruled out, what it would change is part of the deviations.
TEST(Explain, DeviationsCoverWhatIsUndecided) {
  const Values truth = some_values();
  Explanations found = explain_all({kFrame, see(truth, 12), 1, wide_prior(truth)});
  const double sure = covariance_of(found)(kPitch, kPitch);
  found.ground.cost = found.still.cost - 1.1 * Explanations::kLeastGain;
  found.ground.scatter.alike = found.still.scatter.alike;
  const double difference = found.still.values[kPitch] - found.ground.values[kPitch];
  EXPECT_GT(covariance_of(found)(kPitch, kPitch) - sure, 0.2 * difference * difference);
}

TEST(Explain, GroundsAreOneEachAsMuchAsItIsKnown) {
  Solution solution;
  solution.grounds = {{0, 4, 0}, {0, 8, 0}};
  solution.covariance = cv::Mat1d::eye(kParameters + 6, kParameters + 6);
  for (int i = kParameters + 3; i < kParameters + 6; ++i) solution.covariance(i, i) = 0.25;
  const GroundMean mean = mean_ground(solution);
  EXPECT_NEAR(mean.parallax, 0.2 * 4 + 0.8 * 8, 1e-12);
  EXPECT_NEAR(mean.deviation, std::sqrt(0.2), 1e-12);
  solution.grounds = {{0, 0, 0}, {0, 0, 0}};
  EXPECT_EQ(mean_ground(solution).parallax, 0);
}

// What a ground changes that is too small to show is part of the deviations; one that would have shown is ruled out.
TEST(Explain, DeviationsCoverGroundsThatAreTooSmallToShow) {
  const Values truth = some_values();
  Explanations found = explain_all({kFrame, see(truth, 0), 1, wide_prior(truth)});
  ASSERT_LT(found.evidence(), 0.2);
  found.ground.grounds = {{0, 1, 0}};
  const double deviation = mean_ground(found.ground).deviation, difference = 0.05;
  found.ground.values[kPitch] = found.still.values[kPitch] + difference;
  const double sure = found.still.covariance(kPitch, kPitch);
  const double whole = found.ground.covariance(kPitch, kPitch) + difference * difference - sure;
  found.ground.grounds = {{0, 0.5 * deviation, 0}};
  EXPECT_NEAR(covariance_of(found)(kPitch, kPitch) - sure, whole, 1e-9);
  found.ground.grounds = {{0, 40 * deviation, 0}};
  EXPECT_LT(covariance_of(found)(kPitch, kPitch) - sure, 0.03 * whole);
}

// Below a camera there is one, seen once or in many pictures: little must speak for it, and where less does, as much as that
// may hide is part of the deviations.
TEST(Explain, ExpectedGroundsNeedLittle) {
  constexpr double kDifference = 0.05;
  Explanations found;
  found.is_expected = true;
  for (Solution* each : {&found.still, &found.ground}) {
    each->grounds.resize(20);
    each->covariance = cv::Mat1d::eye(kParameters + 60, kParameters + 60);
  }
  found.ground.values[kPitch] = kDifference;
  found.still.cost = 1.1 * Explanations::kExpectedGain;
  EXPECT_TRUE(found.is_ground());
  for (const double part : {0.1, 0.3, 0.7}) {  // of what would be enough
    found.still.cost = part * Explanations::kExpectedGain;
    EXPECT_FALSE(found.is_ground());
    const double share = std::min(1.0, 1 / (3 * part));
    EXPECT_NEAR(covariance_of(found)(kPitch, kPitch), 1 + share * kDifference * kDifference, 1e-9) << part;
  }
}

}  // namespace
}  // namespace biseam::calibrate
