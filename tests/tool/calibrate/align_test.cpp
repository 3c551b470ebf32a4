#include "calibrate/align.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "tool/calibrate/world.hpp"

namespace biseam::calibrate {
namespace {

constexpr int kSide = 400;

Values guess_of(const Camera& camera) {
  Values values{};
  values[kScale] = 0.5 * std::log(camera.lens[0].p * camera.lens[1].p);
  values[kK1] = camera.lens[0].k[0];
  values[kCx0] = camera.lens[0].cx;
  values[kCy0] = camera.lens[0].cy;
  values[kCx1] = camera.lens[1].cx;
  values[kCy1] = camera.lens[1].cy;
  values[kRim] = camera.lens[0].fov / 2;
  return values;
}

Camera mounted(int first, int second) {
  Camera camera = some_camera(kSide);
  camera.lens[0].mount = first;
  camera.lens[1].mount = second;
  return camera;
}

// Things that really are the same: seen in one direction, to some pixels of the reduced strip.  How many are not.
std::size_t wrong_among(const Alignment& found, const Camera& truth) {
  const Projector lens[2] = {Projector(truth, 0), Projector(truth, 1)};
  std::size_t wrong = 0;
  for (const Match& match : found.matches) {
    const Vec3 a = lens[0].unproject(match.at[0].x, match.at[0].y), b = lens[1].unproject(match.at[1].x, match.at[1].y);
    wrong += std::hypot(a.x - b.x, std::hypot(a.y - b.y, a.z - b.z)) > 4 * 2 * kPi / 960;
  }
  return wrong;
}

// Lens 1 is turned by 1.2, -0.8 and 0.6 degrees, up to four pixels of the strips, which the guess does not know.
TEST(Align, MatchesAreWhatBothLensesSee) {
  const Camera camera = mounted(0, 0);
  const std::optional<Alignment> found = align({photograph(camera)}, {guess_of(camera)}, {kSide, kSide, {0, 0}}, 1, in_turn);
  ASSERT_TRUE(found);
  EXPECT_GT(found->matches.size(), 100u);
  EXPECT_LT(wrong_among(*found, camera), found->matches.size() / 20);
  EXPECT_EQ(found->values, guess_of(camera));
}

TEST(Align, QuarterTurnsOfLensOneAreFound) {
  for (const int mount : {0, 90, 180, 270}) {
    const Camera camera = mounted(90, mount);
    const std::optional<Alignment> found =
        align({photograph(camera)}, {guess_of(camera)}, {kSide, kSide, {90, 180}}, 4, backwards);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->frame.mount[0], 90);
    EXPECT_EQ(found->frame.mount[1], mount);
    EXPECT_LT(wrong_among(*found, camera), found->matches.size() / 20);
  }
}

TEST(Align, TheGuessThatAgreesIsTaken) {
  const Camera camera = mounted(0, 0);
  const Values good = guess_of(camera);
  std::vector<Values> guesses(3, good);
  guesses[0][kScale] += 0.12;
  guesses[2][kScale] -= 0.12;
  const std::optional<Alignment> found = align({photograph(camera)}, guesses, {kSide, kSide, {0, 0}}, 1, in_turn);
  ASSERT_TRUE(found);
  EXPECT_EQ(found->values, good);
}

// Each match knows which of the pairs it is of.
TEST(Align, PairsAreToldApart) {
  const Camera camera = mounted(0, 0);
  const Pair pair = photograph(camera);
  Pair covered;
  for (cv::Mat1b& picture : covered.lens) picture = cv::Mat1b(kSide, kSide, static_cast<unsigned char>(90));
  const std::optional<Alignment> found = align({covered, pair, pair}, {guess_of(camera)}, {kSide, kSide, {0, 0}}, 1, in_turn);
  ASSERT_TRUE(found);
  std::size_t count[3] = {};
  for (const Match& match : found->matches) ++count[match.pair];
  EXPECT_EQ(count[0], 0u);
  EXPECT_EQ(count[1], count[2]);
  EXPECT_GT(count[1], 100u);
}

TEST(Align, NothingWhereNothingAgrees) {
  const Camera camera = mounted(0, 0);
  const Frame frame{kSide, kSide, {0, 0}};
  Pair pair = photograph(camera);
  pair.lens[1] = photograph(camera, 1e9, 1, [](const Vec3& d) { return Vec3{-d.z, d.y, d.x}; }).lens[1];  // another place
  EXPECT_FALSE(align({pair}, {guess_of(camera)}, frame, 4, in_turn));
  for (cv::Mat1b& picture : pair.lens) picture = cv::Mat1b(kSide, kSide, static_cast<unsigned char>(90));
  EXPECT_FALSE(align({pair}, {guess_of(camera)}, frame, 4, in_turn));
}

// Some spots on a wall: what agrees may agree by chance.
TEST(Align, NothingWhereTooLittleIsSeen) {
  constexpr int kSpots = 10;
  const Camera camera = mounted(0, 0);
  const auto of_spots = [&](int spots) {
    Pair pair = photograph(camera);
    for (int k = 0; k < 2; ++k) {
      const Projector lens(camera, k);
      for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
          const Vec3 d = lens.unproject(x, y);
          const double t = std::atan2(d.y, d.x) / (2 * kPi) * spots;
          const bool is_spot = std::abs(t - std::round(t)) * 360 / spots < 2 && std::abs(d.z) < 0.03;
          if (pair.lens[k](y, x) > 20 && !is_spot) pair.lens[k](y, x) = 120;
        }
      }
    }
    return align({pair}, {guess_of(camera)}, {kSide, kSide, {0, 0}}, 1, in_turn);
  };
  EXPECT_FALSE(of_spots(kSpots));
  EXPECT_TRUE(of_spots(4 * kSpots));
}

}  // namespace
}  // namespace biseam::calibrate
