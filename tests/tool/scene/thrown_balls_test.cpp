#include "scene/thrown_balls.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <numbers>

#include "scene/courtyard.hpp"

namespace biseam::scene {
namespace {

using std::numbers::pi;

double longitude(const Shape& ball) { return std::atan2(ball.a.x, ball.a.z); }

TEST(ThrownBalls, LieOnTheirPedestalsAtFirst) {
  for (const Shape& ball : thrown_balls(0)) EXPECT_NEAR(ball.a.y + ball.b.y, y_of_height(kPedestalHeight), 1e-12);
}

TEST(ThrownBalls, CrossBothSeams) {
  for (std::size_t k = 0; k < 2; ++k) {
    bool crossed[2] = {};
    for (int step = 0; step < 600; ++step) {
      const Shape now = thrown_balls(step / 100.0)[k], next = thrown_balls((step + 1) / 100.0)[k];
      if (now.a.z * next.a.z < 0) crossed[now.a.x > 0] = true;
    }
    EXPECT_TRUE(crossed[0] && crossed[1]) << "ball " << k;
  }
}

// Within the first second, so that a short clip has it.
TEST(ThrownBalls, AreEachOverASeamSoon) {
  double nearest[2] = {pi, pi};
  for (int frame = 0; frame < 30; ++frame) {
    const ThrownBalls balls = thrown_balls(frame / 30.0);
    for (std::size_t k = 0; k < 2; ++k) nearest[k] = std::min(nearest[k], std::abs(std::abs(longitude(balls[k])) - pi / 2));
  }
  EXPECT_LT(nearest[0], 0.03);
  EXPECT_LT(nearest[1], 0.03);
}

TEST(ThrownBalls, MoveEveryFrameByLessThanTheirWidth) {
  for (int frame = 0; frame < 360; ++frame) {
    const ThrownBalls now = thrown_balls(frame / 30.0), next = thrown_balls((frame + 1) / 30.0);
    for (std::size_t k = 0; k < 2; ++k) {
      EXPECT_GT(length(next[k].a - now[k].a), 0.01) << frame;
      EXPECT_LT(length(next[k].a - now[k].a), 2 * now[k].b.x) << frame;
    }
  }
}

double distance_to(const Bounds& box, Vec3 at) {
  const auto beyond = [](double low, double high, double x) { return std::max({low - x, x - high, 0.0}); };
  return length(
      {beyond(box.low.x, box.high.x, at.x), beyond(box.low.y, box.high.y, at.y), beyond(box.low.z, box.high.z, at.z)});
}

TEST(ThrownBalls, FlyThroughNothing) {
  const Courtyard yard = build_courtyard();
  for (int step = 0; step < 800; ++step) {
    const ThrownBalls balls = thrown_balls(step / 100.0);
    for (const Shape& ball : balls) {
      EXPECT_LT(ball.a.y + ball.b.y, kEyeHeight);
      for (const Shape& other : yard.shapes) EXPECT_GT(distance_to(bounds_of(other), ball.a), ball.b.x - 1e-9) << step;
    }
    EXPECT_GT(length(balls[0].a - balls[1].a), balls[0].b.x + balls[1].b.x) << step;
  }
}

}  // namespace
}  // namespace biseam::scene
