#include "calibrate/calibrate.hpp"

#include <gtest/gtest.h>

#include "calibrate/estimate.hpp"
#include "calibrate/finding.hpp"
#include "profile/write.hpp"
#include "tool/calibrate/world.hpp"

namespace biseam::calibrate {
namespace {

constexpr int kSide = 640;

Camera with_mounts(Camera camera, int first, int second) {
  camera.lens[0].mount = first;
  camera.lens[1].mount = second;
  return camera;
}

TEST(CalibrateAccuracy, OnePairOfFarThings) {
  const Camera camera = some_camera(kSide);
  const Estimate found = estimate({photograph(camera)}, std::nullopt, in_turn);
  EXPECT_LT(seam_error(camera, found.camera), 1);
  EXPECT_GT(found.kept, 0.8);
}

TEST(CalibrateAccuracy, NearGroundDoesNotTurnLensOne) {
  Camera camera = some_camera(kSide);
  camera.baseline = 0.03;
  EXPECT_LT(seam_error(camera, estimate({photograph(camera, 1.5)}, std::nullopt, in_turn).camera), 1.5);
}

// Turned by the parallax below, a camera over a near ground looks much like one under a near ceiling.
TEST(CalibrateAccuracy, NearGroundLiesBelow) {
  Camera camera = some_camera(kSide);
  camera.baseline = 0.05;
  const Estimate found = estimate({photograph(camera, 0.8)}, std::nullopt, in_turn);
  EXPECT_GT(found.solution.grounds.front().y, 5);
  EXPECT_NEAR(found.camera.lens[1].turn.pitch, camera.lens[1].turn.pitch, 0.3);
}

// A landscape under a clear sky, with a ground `ground` metres below.
Pair landscape(const Camera& camera, double ground) {
  Pair pair = photograph(camera, ground);
  for (int k = 0; k < 2; ++k) {
    const Projector lens(camera, k);
    for (int y = 0; y < kSide; ++y) {
      for (int x = 0; x < kSide; ++x) {
        unsigned char& value = pair.lens[k](y, x);
        const double sky = std::clamp(-lens.unproject(x, y).y / 0.15, 0.0, 1.0);
        if (value > 20) value = cv::saturate_cast<unsigned char>((1 - sky) * value + sky * 150);
      }
    }
  }
  return pair;
}

TEST(CalibrateAccuracy, HalfARingIsEnough) {
  const Camera camera = some_camera(kSide);
  EXPECT_LT(seam_error(camera, estimate({landscape(camera, 1e9)}, std::nullopt, in_turn).camera), 1.5);
}

// Under a clear sky, what a ground displaces by a few pixels looks much like a turn of lens 1.
TEST(CalibrateAccuracy, GroundNearByAFewPixelsIsNoTurn) {
  Camera camera = some_camera(kSide);
  camera.baseline = 0.012;
  const Estimate found = estimate({landscape(camera, 1.5)}, std::nullopt, in_turn);
  const double error = seam_error(camera, found.camera);
  EXPECT_LT(error, 1.5);
  EXPECT_LT(error, 3 * found.seam_deviation);
}

TEST(CalibrateAccuracy, MountsAreFound) {
  const int mounts[][2] = {{90, 270}, {90, 90}, {180, 180}, {270, 90}};
  for (const auto& mount : mounts) {
    const Camera camera = with_mounts(some_camera(kSide), mount[0], mount[1]);
    const Estimate found = estimate({photograph(camera)}, std::nullopt, in_turn);
    EXPECT_EQ(found.camera.lens[0].mount, mount[0]);
    EXPECT_EQ(found.camera.lens[1].mount, mount[1]);
    EXPECT_LT(seam_error(camera, found.camera), 1);
  }
}

std::vector<LumaPair> views(const std::vector<Pair>& pairs) {
  std::vector<LumaPair> lumas;
  for (const Pair& pair : pairs) {
    LumaPair luma;
    for (int k = 0; k < 2; ++k) {
      luma.lens[k] = {pair.lens[k].data, pair.lens[k].cols, pair.lens[k].rows, std::ptrdiff_t(pair.lens[k].step)};
    }
    lumas.push_back(luma);
  }
  return lumas;
}

TEST(Calibrate, SameFindingHoweverTheWorkIsShared) {
  constexpr int kSmallSide = 400;
  const std::vector<Pair> pairs = {photograph(some_camera(kSmallSide)), photograph(some_camera(kSmallSide), 1e9, 3)};
  const Finding first = calibrate(views(pairs), {}, in_turn), second = calibrate(views(pairs), {}, backwards);
  EXPECT_EQ(profile::write(first.settings), profile::write(second.settings));
  EXPECT_EQ(first.summary, second.summary);
}

void expect_refused(const std::vector<Pair>& pairs, const Options& options = {}) {
  try {
    calibrate(views(pairs), options, in_turn);
    ADD_FAILURE() << "not refused";
  } catch (const Refusal& refusal) {
    EXPECT_EQ(std::string(refusal.what()).find('\n'), std::string::npos);
  }
}

// Of some_camera.
profile::CameraSettings some_settings(const Camera& camera) {
  profile::CameraSettings settings;
  for (int k = 0; k < 2; ++k) {
    const Lens& lens = camera.lens[k];
    profile::LensSettings& to = settings.lens[k];
    to.cx = lens.cx;
    to.cy = lens.cy;
    to.p = lens.p;
    to.k = {lens.k[0], lens.k[1], lens.k[2]};
    to.fov = lens.fov;
  }
  return settings;
}

TEST(Calibrate, ThirdTermsOfTheStartAreHeld) {
  Camera camera = some_camera(kSide);
  for (Lens& lens : camera.lens) lens.k[2] = -0.002;
  const std::vector<Pair> pairs = {photograph(camera)};
  Options options;
  options.start = some_settings(camera);
  options.hold_k = true;
  const Finding held = calibrate(views(pairs), options, in_turn);
  for (int k = 0; k < 2; ++k) EXPECT_EQ(held.settings.lens[k].k, options.start->lens[k].k);
  EXPECT_LT(held.deviations[kK3], 1e-8);
  options.start->lens[1].k = {-0.012, 0, -0.001};
  expect_refused(pairs, options);
  options.hold_k = false;
  const Finding free = calibrate(views(pairs), options, in_turn);
  EXPECT_LT(seam_error(camera, free.camera), 1);
  EXPECT_EQ(free.camera.lens[0].k[2], free.camera.lens[1].k[2]);
}

TEST(Calibrate, CoveredLensIsRefused) {
  Pair pair = photograph(some_camera(kSide));
  pair.lens[1] = cv::Mat1b(kSide, kSide, static_cast<unsigned char>(2));
  expect_refused({pair});
}

TEST(Calibrate, TwoPlacesAreRefused) {
  Pair pair = photograph(some_camera(kSide));
  Camera elsewhere = some_camera(kSide);
  elsewhere.lens[1].turn.yaw = 40;
  pair.lens[1] = photograph(elsewhere).lens[1];
  expect_refused({pair});
}

TEST(Calibrate, NothingToSeeIsRefused) {
  Pair pair = photograph(some_camera(kSide));
  for (cv::Mat1b& picture : pair.lens) {
    for (unsigned char& value : picture) value = value > 40 ? 128 : 2;
  }
  expect_refused({pair});
}

TEST(Calibrate, CirclesAlone) {
  const Camera camera = some_camera(kSide);
  const profile::CameraSettings found = circles(views({photograph(camera)}), in_turn);
  for (int k = 0; k < 2; ++k) {
    const Lens& lens = camera.lens[k];
    EXPECT_NEAR(found.lens[k].cx.value_or(0), lens.cx, 1);
    EXPECT_NEAR(found.lens[k].cy.value_or(0), lens.cy, 1);
    EXPECT_NEAR(found.lens[k].p.value_or(0) * kUsualFov / 2 * kDegree, radius(lens, lens.fov / 2 * kDegree), 2);
  }
  Pair dark{{cv::Mat1b(kSide, kSide, static_cast<unsigned char>(2)), cv::Mat1b(kSide, kSide, static_cast<unsigned char>(2))}};
  EXPECT_FALSE(circles(views({dark}), in_turn).lens[0].p);
}

TEST(Calibrate, OddInputIsRefused) {
  expect_refused({});
  Pair pair = photograph(some_camera(kSide));
  pair.lens[1] = pair.lens[1](cv::Rect(0, 0, 600, 600));
  expect_refused({pair});
  Pair tiny;
  tiny.lens[0] = tiny.lens[1] = cv::Mat1b(20, 20, static_cast<unsigned char>(9));
  expect_refused({tiny});
}

}  // namespace
}  // namespace biseam::calibrate
