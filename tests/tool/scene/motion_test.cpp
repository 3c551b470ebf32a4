#include "scene/motion.hpp"

#include <gtest/gtest.h>

#include <cmath>

namespace biseam::scene {
namespace {

TEST(Attitude, TurnsToTheRightFrameByFrame) {
  const Turn turn = attitude({.turn = 2.5}, 6, 0.2);
  EXPECT_EQ(turn.yaw, 15);
  EXPECT_EQ(turn.pitch, 0);
  EXPECT_EQ(turn.roll, 0);
}

TEST(Attitude, ShakesAsMuchAsItShouldAndSmoothly) {
  double squares[3] = {};
  int count = 0;
  for (std::uint64_t seed = 0; seed < 60; ++seed) {
    const Motion motion{.shake = 2, .seed = seed};
    const Turn start = attitude(motion, 0, 0);
    EXPECT_EQ(start.yaw, 0);
    EXPECT_EQ(start.pitch, 0);
    EXPECT_EQ(start.roll, 0);
    for (int frame = 1; frame < 120; ++frame, ++count) {
      const Turn now = attitude(motion, frame, frame / 30.0), last = attitude(motion, frame - 1, (frame - 1) / 30.0);
      const double angles[3] = {now.yaw, now.pitch, now.roll}, moved[3] = {last.yaw, last.pitch, last.roll};
      for (int k = 0; k < 3; ++k) {
        squares[k] += angles[k] * angles[k];
        EXPECT_LT(std::abs(angles[k] - moved[k]), 0.6) << seed << ", " << frame;
      }
    }
  }
  for (const double sum : squares) EXPECT_NEAR(std::sqrt(sum / count), 2, 0.4);
}

TEST(Attitude, IsAnotherOneForEverySeedAndAngle) {
  const Turn one = attitude({.shake = 1, .seed = 1}, 9, 0.3), other = attitude({.shake = 1, .seed = 2}, 9, 0.3);
  EXPECT_NE(one.yaw, other.yaw);
  EXPECT_NE(one.yaw, one.pitch);
  EXPECT_NE(one.pitch, one.roll);
  EXPECT_EQ(attitude({.shake = 1, .seed = 1}, 9, 0.3).roll, one.roll);
}

TEST(Turned, ViewsLookWhereTheCameraDoesAndTakeTheirPupilsAlong) {
  const View panorama = turned(view_of(PanoramaView{64, 32}), {90, 0, 0});
  const Ray middle = panorama.ray({31.5, 15.5}).value();
  EXPECT_NEAR(middle.direction.x, -1, 1e-12) << "the panorama's middle is where lens 1 looks, against z; x is on its left";
  const View lens = turned(view_of(Fisheye::fitting(1, 64, 3.4), 0.1), {90, 0, 0});
  const Ray axis = lens.ray({31.5, 31.5}).value();
  EXPECT_NEAR(axis.direction.x, -1, 1e-12);
  EXPECT_NEAR(axis.origin.x, -0.05, 1e-12);
  EXPECT_FALSE(lens.ray({0, 0}));
  const View raised = turned(view_of(PanoramaView{64, 32}), {0, 90, 0});
  EXPECT_NEAR(raised.ray({31.5, 15.5}).value().direction.y, -1, 1e-12) << "y is down";
}

}  // namespace
}  // namespace biseam::scene
