#include "calibrate/turning.hpp"

#include <gtest/gtest.h>

#include "calibrate/vectors.hpp"
#include "tool/calibrate/turned.hpp"

namespace biseam::calibrate {
namespace {

constexpr Frame kFrame{kTurningSide, kTurningSide, {0, 0}};

// By the true camera, tracks lead to where the turned camera sees the same direction, to parts of a pixel.
TEST(Turning, TracksFollowFarThings) {
  const Camera camera = some_camera(kTurningSide);
  std::vector<Pair> pairs = film_turning(camera);
  pairs.resize(3);
  const Values values = rough_guess(camera);
  std::vector<Turning> turnings = find_turnings(pairs, values, kFrame, in_turn);
  ASSERT_EQ(turnings.size(), 4u);
  track_turnings(pairs, values, kFrame, 70, turnings, in_turn);
  for (const Turning& turning : turnings) {
    EXPECT_GT(turning.tracks.size(), 60u);
    const Matrix3 truth = transposed(turning_pose(turning.pair + 1)) * turning_pose(turning.pair);
    const Projector lens(camera, turning.lens);
    int good = 0;
    for (const Track& track : turning.tracks) {
      const ImagePoint there = lens.project(truth * lens.unproject(track.at[0].x, track.at[0].y));
      good += std::hypot(there.x - track.at[1].x, there.y - track.at[1].y) < 0.3;
    }
    EXPECT_GT(good, 0.9 * double(turning.tracks.size()));
    const Vec3 off = turning.rotation * Vec3{0, 0, 1} - truth * Vec3{0, 0, 1};
    EXPECT_LT(dot(off, off), 0.02 * 0.02);
  }
}

TEST(Turning, NoneWhereNothingTurnsOrNothingIsTheSame) {
  const Camera camera = some_camera(kTurningSide);
  const Pair pair = photograph(camera);
  const Pair other = photograph(camera, 1e9, 1, [](const Vec3& d) { return Vec3{d.x + 3, d.y + 5, d.z - 7}; });
  EXPECT_TRUE(find_turnings({pair, pair}, rough_guess(camera), kFrame, in_turn).empty());
  EXPECT_TRUE(find_turnings({pair, other}, rough_guess(camera), kFrame, in_turn).empty());
}

}  // namespace
}  // namespace biseam::calibrate
