#include "calibrate/in_lens.hpp"

#include <gtest/gtest.h>

#include "calibrate/estimate.hpp"
#include "calibrate/vectors.hpp"
#include "tool/calibrate/turned.hpp"

namespace biseam::calibrate {
namespace {

constexpr Frame kFrame{kTurningSide, kTurningSide, {0, 0}};

// Root mean square over a lens's field, rotations of the lens taken out, in pixels of a 3840 panorama.
double straightness(const Camera& truth, const Camera& found, int lens) {
  const Projector true_lens(truth, lens), found_lens(found, lens);
  cv::Matx33d sum = cv::Matx33d::zeros();
  std::vector<std::pair<Vec3, Vec3>> all;
  for (int i = 0; i < 40; ++i) {
    for (int j = 0; j < 40; ++j) {
      const double x = (i + 0.5) * truth.lens[lens].width / 40, y = (j + 0.5) * truth.lens[lens].height / 40;
      if (std::hypot(x - truth.lens[lens].cx, y - truth.lens[lens].cy) > radius(truth.lens[lens], kPi / 2)) continue;
      all.emplace_back(found_lens.unproject(x, y), true_lens.unproject(x, y));
      const auto& [a, b] = all.back();
      sum += cv::Matx31d(b.x, b.y, b.z) * cv::Matx13d(a.x, a.y, a.z);
    }
  }
  cv::Matx31d w;
  cv::Matx33d u, vt;
  cv::SVD::compute(sum, w, u, vt);
  const cv::Matx33d turn = u * vt;
  double square = 0;
  for (const auto& [a, b] : all) {
    const cv::Matx31d off = turn * cv::Matx31d(a.x, a.y, a.z) - cv::Matx31d(b.x, b.y, b.z);
    square += off.dot(off) / double(all.size());
  }
  return std::sqrt(square) * kPixelsPerRadian;
}

TEST(InLensAccuracy, TurningTellsScaleAndDistortionApart) {
  const Camera camera = some_camera(kTurningSide);
  const Values guess = rough_guess(camera);
  const std::vector<Pair> pairs = film_turning(camera);
  const std::optional<InLens> found = look_in_lenses(pairs, guess, kFrame, {0, 1, 0}, in_turn);
  ASSERT_TRUE(found);
  EXPECT_GT(found->tracks, 500u);
  Values values = guess;
  take_in_lens(*found, kFrame, values);
  for (int k = 0; k < 2; ++k) {
    const Camera before = camera_of(guess, kFrame), after = camera_of(values, kFrame);
    EXPECT_GT(straightness(camera, before, k), 5);
    EXPECT_LT(straightness(camera, after, k), 0.5);
    EXPECT_NEAR(after.lens[k].p, camera.lens[k].p, 0.002 * camera.lens[k].p);
    EXPECT_NEAR(after.lens[k].k[0], camera.lens[k].k[0], 0.002);
  }
  EXPECT_EQ(values[kPitch], guess[kPitch]);
  const Lens before = camera_of(guess, kFrame).lens[0], after = camera_of(values, kFrame).lens[0];
  EXPECT_NEAR(radius(after, after.fov / 2 * kDegree), radius(before, before.fov / 2 * kDegree), 0.01);

  const Estimate whole = estimate(pairs, Known{values, kFrame, {}}, in_turn);
  EXPECT_GT(whole.tracks, 500u);
  EXPECT_LT(seam_error(camera, whole.camera), 0.5);
  for (int k = 0; k < 2; ++k) EXPECT_LT(straightness(camera, whole.camera, k), 0.5);
  EXPECT_LT(whole.deviations[kScale], 0.002);
}

// The circle of such a lens has its radius twice: where it ends, and again where the radius decreases, at an angle that no lens
// sees.
TEST(InLens, RimsStayWhereLensesBendMuch) {
  Values values = rough_guess(some_camera(kTurningSide));
  values[kK1] = -0.016;
  values[kK2] = -0.0034;
  values[kK3] = -0.0011;
  values[kRim] = 100;
  InLens found;
  found.values = values;
  found.values[kScale] -= 0.01;
  found.stiffness = cv::Mat1d::eye(kYaw, kYaw);
  const Lens before = camera_of(values, kFrame).lens[0];
  take_in_lens(found, kFrame, values);
  EXPECT_EQ(values[kScale], found.values[kScale]);
  EXPECT_GT(values[kRim], 100);
  EXPECT_LT(values[kRim], 104);
  EXPECT_NEAR(radius(camera_of(values, kFrame).lens[0], values[kRim] * kDegree), radius(before, 100 * kDegree), 1e-6);
}

// A camera that is carried along over a ground: what is below moves by more than the turn.
TEST(InLens, WalkingOverAGroundBendsNoLens) {
  constexpr int kPairs = 4;
  constexpr double kGround = 1.5, kStep = 0.3;  // metres
  const Camera camera = some_camera(kTurningSide);
  std::vector<Pair> pairs;
  for (int i = 0; i < kPairs; ++i) {
    const Matrix3 pose = rotation({7.0 * i, 0, 0});
    pairs.push_back(photograph(camera, 1e9, 1, [&](const Vec3& d) {
      const Vec3 turned = pose * d;
      return turned.y < 1e-6 ? turned : unit((kGround / turned.y) * turned + Vec3{0, 0, i * kStep});
    }));
  }
  const Values guess = rough_guess(camera);
  const std::optional<InLens> found = look_in_lenses(pairs, guess, kFrame, {0, 1, 0}, in_turn);
  ASSERT_TRUE(found);
  EXPECT_GT(found->tracks, 300u);
  Values values = guess;
  take_in_lens(*found, kFrame, values);
  for (int k = 0; k < 2; ++k) EXPECT_LT(straightness(camera, camera_of(values, kFrame), k), 0.25);
}

TEST(InLens, ACameraThatStandsTellsNothing) {
  const Camera camera = some_camera(kTurningSide);
  const Pair pair = photograph(camera);
  EXPECT_FALSE(look_in_lenses({pair, pair}, rough_guess(camera), kFrame, {0, 1, 0}, in_turn));
  EXPECT_FALSE(look_in_lenses({pair}, rough_guess(camera), kFrame, {0, 1, 0}, in_turn));
}

}  // namespace
}  // namespace biseam::calibrate
