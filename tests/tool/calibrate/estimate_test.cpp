#include "calibrate/estimate.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "tool/calibrate/world.hpp"

namespace biseam::calibrate {
namespace {

constexpr int kSide = 400;

// The values that camera_of() makes this camera of.
Values values_of(const Camera& camera) {
  const Lens &first = camera.lens[0], &second = camera.lens[1];
  Values values{};
  values[kScale] = 0.5 * std::log(first.p * second.p);
  values[kScaleRatio] = std::log(second.p / first.p);
  values[kK1] = 0.5 * (first.k[0] + second.k[0]);
  values[kCx0] = first.cx;
  values[kCy0] = first.cy;
  values[kCx1] = second.cx;
  values[kCy1] = second.cy;
  values[kYaw] = second.turn.yaw;
  values[kPitch] = second.turn.pitch;
  values[kRoll] = second.turn.roll;
  values[kRim] = first.fov / 2;
  return values;
}

std::string refusal_of(const std::vector<Pair>& pairs, const std::optional<Known>& known) {
  try {
    estimate(pairs, known, in_turn);
  } catch (const Refusal& refusal) {
    return refusal.what();
  }
  return "none";
}

TEST(EstimateAccuracy, FindsTheTurnAndSaysHowSureItIs) {
  const Camera camera = some_camera(kSide);
  const Values truth = values_of(camera);
  const Estimate found = estimate({photograph(camera)}, std::nullopt, in_turn);
  EXPECT_LT(seam_error(camera, found.camera), 1.5);
  for (const int p : {kYaw, kPitch, kRoll}) {
    const std::size_t i = std::size_t(p);
    EXPECT_GT(found.deviations[i], 0);
    EXPECT_LT(found.deviations[i], 0.5);
    EXPECT_LT(std::abs(found.solution.values[i] - truth[i]), 5 * found.deviations[i]) << "parameter " << p;
  }
  EXPECT_LT(found.seam_deviation, found.worst_deviation);
  EXPECT_EQ(found.matches.size(), found.solution.remainders.size());
  EXPECT_EQ(found.matches.size(), found.solution.shares.size());
  for (int k = 0; k < 2; ++k) {
    ASSERT_TRUE(found.circle[k]);
    EXPECT_NEAR(found.circle[k]->cx, camera.lens[k].cx, 1);
    EXPECT_NEAR(found.circle[k]->cy, camera.lens[k].cy, 1);
  }
}

// Of lenses whose radius hardly grows at the rim, where a pixel of the pictures is many of the panorama.
TEST(EstimateAccuracy, SaysByHowManyPixelsOfThePanoramaLensesMayDisagree) {
  constexpr double kSmall = 1e-3;  // of a deviation, for which everything is linear
  Camera camera = some_camera(kSide);
  for (Lens& lens : camera.lens) lens.k[0] = -0.05;
  const Known known{values_of(camera), {kSide, kSide, {0, 0}}, {}};
  const Estimate found = estimate({photograph(camera)}, known, in_turn);
  cv::Mat1d variances, axes;
  cv::eigen(found.solution.covariance(cv::Rect(0, 0, kParameters, kParameters)), variances, axes);
  double square = 0;
  for (int i = 0; i < kParameters; ++i) {
    Values moved = found.solution.values;
    for (int p = 0; p < kParameters; ++p)
      moved[std::size_t(p)] += kSmall * std::sqrt(std::max(0.0, variances(i, 0))) * axes(i, p);
    square += std::pow(seam_error(found.camera, camera_of(moved, found.frame)) / kSmall, 2);
  }
  EXPECT_NEAR(found.seam_deviation, std::sqrt(square), 0.05 * std::sqrt(square));
}

TEST(Estimate, WhatIsHeldStaysAndTheRestIsFound) {
  Camera camera = some_camera(kSide);
  camera.lens[0].mount = 90;
  camera.lens[1].mount = 270;
  const Values truth = values_of(camera);
  Known known;
  known.values = truth;
  known.frame = {kSide, kSide, {90, 270}};
  for (const std::size_t p : {kScale, kScaleRatio, kK1, kCx0, kCy1}) known.held[p] = true;
  known.values[kScale] += 1e-4;  // even where the pictures say otherwise
  for (const std::size_t p : {kYaw, kPitch, kRoll}) known.values[p] = 0;
  const Estimate found = estimate({photograph(camera)}, known, in_turn);
  for (const std::size_t p : {kScale, kScaleRatio, kK1, kCx0, kCy1}) {
    EXPECT_NEAR(found.solution.values[p], known.values[p], 1e-6) << "parameter " << p;
    EXPECT_LT(found.deviations[p], 1e-6) << "parameter " << p;
  }
  EXPECT_NEAR(found.solution.values[kYaw], truth[kYaw], 0.15);
  EXPECT_NEAR(found.solution.values[kPitch], truth[kPitch], 0.15);
  EXPECT_NEAR(found.solution.values[kRoll], truth[kRoll], 0.1);
  EXPECT_EQ(found.camera.lens[0].mount, 90);
  EXPECT_EQ(found.camera.lens[1].mount, 270);
  EXPECT_EQ(found.start.lens[0].cx, known.values[kCx0]);
  EXPECT_EQ(found.start.lens[1].turn.yaw, 0);
}

TEST(Estimate, TellsWhichLensIsCovered) {
  for (int k = 0; k < 2; ++k) {
    Pair pair = photograph(some_camera(kSide));
    pair.lens[k] = cv::Mat1b(kSide, kSide, static_cast<unsigned char>(3));
    EXPECT_NE(refusal_of({pair}, std::nullopt).find("lens " + std::to_string(k)), std::string::npos);
  }
}

TEST(Estimate, TellsThatOneLensWasGivenTwice) {
  Pair pair = photograph(some_camera(kSide));
  pair.lens[1] = pair.lens[0];
  EXPECT_EQ(refusal_of({pair}, std::nullopt), "both lenses' pictures are one and the same");
}

// How often the only pair is matched: other work is in more pieces.
int rounds_of(const Pair& pair) {
  int rounds = 0;
  estimate({pair}, std::nullopt, [&](int pieces, const std::function<void(int)>& work) {
    rounds += pieces == 1;
    in_turn(pieces, work);
  });
  return rounds;
}

TEST(EstimateAccuracy, StripsAreMadeAgainUntilTheCameraStandsStill) {
  Camera camera = some_camera(kSide);
  camera.baseline = 0.06;
  const auto [fewest, most] = std::minmax({rounds_of(photograph(camera)), rounds_of(photograph(camera, 1.5, 4))});
  EXPECT_GE(fewest, 3);
  EXPECT_LT(fewest, most);
  EXPECT_LT(most, 6);
}

// Pictures that the circles fill show no circle: whoever says where they are gets on.
TEST(Estimate, WithoutCirclesItStartsFromWhatIsKnown) {
  Camera camera = some_camera(kSide);
  for (Lens& lens : camera.lens) lens.p *= 1.44;  // nothing dark is left, not in the corners either
  const std::vector<Pair> pairs = {photograph(camera)};
  EXPECT_NE(refusal_of(pairs, std::nullopt).find("circle"), std::string::npos);
  Known known;
  known.values = values_of(camera);
  known.frame = {kSide, kSide, {0, 0}};
  EXPECT_EQ(refusal_of(pairs, known).find("circle"), std::string::npos);
}

}  // namespace
}  // namespace biseam::calibrate
