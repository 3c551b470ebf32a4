#include "calibrate/finding.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "calibrate/estimate.hpp"
#include "profile/write.hpp"
#include "tool/calibrate/world.hpp"

namespace biseam::calibrate {
namespace {

constexpr int kSide = 480;

Finding find(double baseline, double ground) {
  Camera camera = some_camera(kSide);
  camera.baseline = baseline;
  return finding_of(estimate({photograph(camera, ground)}, std::nullopt, in_turn));
}

bool tells(const Finding& finding, const char* what) { return finding.summary.find(what) != std::string::npos; }

TEST(Finding, BaselineShowsOverANearGround) {
  constexpr double kShare = 0.05 / 0.8;
  const Finding finding = find(0.05, 0.8);
  ASSERT_TRUE(finding.baseline);
  EXPECT_NEAR(finding.baseline->share, kShare, std::max(0.15 * kShare, 4 * finding.baseline->deviation));
  EXPECT_TRUE(tells(finding, "baseline: 0.0")) << finding.summary;
}

TEST(Finding, FarThingsShowNoBaseline) {
  const Finding finding = find(0.05, 1e9);
  EXPECT_FALSE(finding.baseline);
  EXPECT_TRUE(tells(finding, "baseline: none shows")) << finding.summary;
}

// Of lenses that point exactly away from each other, the overlap tells how they bend at the ring, but not how far it is.
TEST(Finding, TellsWhereTheAngleOfViewIsFrom) {
  constexpr const char* kUsual = "known more from what lenses usually are like";
  Camera camera = some_camera(kSide);
  camera.lens[1].turn = {0, 0, 0};
  const Finding straight = finding_of(estimate({photograph(camera)}, std::nullopt, in_turn));
  EXPECT_TRUE(tells(straight, kUsual)) << straight.summary;
  camera.lens[1].turn = {3, -3, 0};
  const Finding turned = finding_of(estimate({photograph(camera)}, std::nullopt, in_turn));
  EXPECT_TRUE(tells(turned, "angle of view: ")) << turned.summary;
  EXPECT_FALSE(tells(turned, kUsual)) << turned.summary;
  EXPECT_NEAR(turned.camera.lens[0].fov, camera.lens[0].fov, 6 * turned.deviations[kRim]);
}

// What the eighths tell belongs to the matches that are handed out, and to the settings.
TEST(Finding, MatchesAreWhatTheNumbersTell) {
  const Finding finding = find(0, 1e9);
  const auto kept = std::count_if(finding.matches.begin(), finding.matches.end(), [](const auto& match) { return match.kept; });
  EXPECT_NEAR(double(kept) / double(finding.matches.size()), finding.kept, 0.05);
  double square = 0;
  for (const ExplainedMatch& match : finding.matches) {
    if (match.kept) square += match.around * match.around;
    EXPECT_EQ(match.match.pair, 0);
  }
  double left = 0;
  for (const double octant : finding.left) left += octant * octant / kOctants;
  EXPECT_LT(std::sqrt(square / double(kept)) * kPixelsPerRadian, 1.5 * std::sqrt(left));
  EXPECT_EQ(finding.worst(), *std::max_element(finding.left.begin(), finding.left.end()));
  for (int k = 0; k < 2; ++k) {
    EXPECT_NEAR(*finding.settings.lens[k].cx, finding.camera.lens[k].cx, 5.01e-4);
    EXPECT_NEAR(*finding.settings.lens[k].p, finding.camera.lens[k].p, 5.01e-4);
    EXPECT_EQ(finding.start.lens[k].mount, finding.camera.lens[k].mount);
  }
  EXPECT_GT(seam_error(finding.camera, finding.start), 3);
  EXPECT_GT(finding.seam_deviation, 0);
  EXPECT_GE(finding.worst_deviation, finding.seam_deviation);
  char seams[100];
  std::snprintf(seams, sizeof seams, "within %.2f pixels of a panorama 3840 wide, %.2f in", 2 * finding.seam_deviation,
                2 * finding.worst_deviation);
  EXPECT_TRUE(tells(finding, seams)) << finding.summary;
  Camera truth = some_camera(kSide);
  truth.baseline = 0;
  EXPECT_LT(seam_error(truth, finding.camera), 2 * finding.seam_deviation);
}

TEST(Finding, WhatIsLeftIsInPixelsOfThePanorama) {
  Estimate found;
  found.camera = some_camera(kSide);
  for (Lens& lens : found.camera.lens) lens.k[0] = -0.05;
  const double scale = across_scale(found.camera);
  ASSERT_LT(scale, 0.7);
  found.matches.resize(1);
  found.solution.grounds.resize(1);
  found.solution.remainders = {{{9, 4 * scale}, {0.1, 0}}};
  found.solution.along = {3};
  found.solution.shares = {{1, 0, 0}};
  found.solution.covariance = cv::Mat1d::eye(kParameters + 3, kParameters + 3);
  EXPECT_NEAR(finding_of(found).left[4], 5 / std::sqrt(2), 1e-9);
  found.solution.shares = {{0, 1, 0}};  // on a ground that is nowhere
  EXPECT_NEAR(finding_of(found).left[4], 5 / std::sqrt(2), 1e-9);
  found.solution.grounds = {{1, 0, 0}};
  EXPECT_NEAR(finding_of(found).left[4], 3, 1e-9);
}

TEST(Finding, TellsWhereLens1Stands) {
  Estimate found;
  found.camera = some_camera(kSide);
  found.solution.covariance = cv::Mat1d::eye(kParameters + 3, kParameters + 3);
  EXPECT_FALSE(tells(finding_of(found), "beside")) << "it is not known where nothing is near";
  const double scale = across_scale(found.camera);
  found.deviations[kBesideX] = found.deviations[kBesideY] = 0.02 / scale;
  found.solution.values[kBesideX] = 0.25 / scale;
  found.solution.values[kBesideY] = -0.1 / scale;
  found.solution.scatter.scattered = true;
  EXPECT_TRUE(tells(finding_of(found), "beside it 0.25 +-0.02, -0.10 +-0.02")) << finding_of(found).summary;
}

TEST(Finding, RoundsToDecimals) {
  EXPECT_EQ(rounded(1.23456, 3), 1.235);
  EXPECT_EQ(rounded(-1.23456, 0), -1);
}

}  // namespace
}  // namespace biseam::calibrate
