#include "calibration/report/strips.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "tool/calibration/report/painted_finding.hpp"

namespace biseam::tool {
namespace {

constexpr int kColumns = 960;
constexpr double kReach = 4 * kDegree;

// Of a row of a strip, which is one third of the picture: 0 lens 0, 1 lens 1, 2 their difference.
double mean_of(const Rgb& quarter, int row) {
  const std::size_t third = quarter.bytes.size() / 3;
  double sum = 0;
  for (std::size_t i = 0; i < third; ++i) sum += quarter.bytes[std::size_t(row) * third + i];
  return sum / double(third);
}

TEST(RingStrips, RightCameraShowsTheSameInBothLenses) {
  Camera wrong = calibrate::some_camera(kSide);
  wrong.lens[1].turn.yaw += 3;
  const auto right_strips = ring_strips(photographed_pair(), calibrate::some_camera(kSide), kColumns, kReach);
  const auto wrong_strips = ring_strips(photographed_pair(), wrong, kColumns, kReach);
  double darker = 0, brighter = 0;
  for (std::size_t i = 0; i < kQuarters; ++i) {
    EXPECT_EQ(right_strips[i].width, kColumns / kQuarters);
    EXPECT_EQ(right_strips[i].height % 3, 0);
    EXPECT_NEAR(mean_of(right_strips[i], 0), mean_of(right_strips[i], 1), 1);
    darker += mean_of(right_strips[i], 2);
    brighter += mean_of(wrong_strips[i], 2);
  }
  EXPECT_LT(2 * darker, brighter);
}

TEST(RingStrips, BeginAtTheLeftAndGoOverTheTop) {
  const auto strips = ring_strips(photographed_pair(), calibrate::some_camera(kSide), kColumns, kReach);
  for (int i = 0; i < kQuarters; ++i) {
    const Rgb& quarter = strips[std::size_t(i)];
    const int rows = quarter.height / 3, x = quarter.width / 2;
    double shown = 0, there = 0;  // over a spot, as pictures have noise
    for (int y = rows / 2 - 4; y <= rows / 2 + 4; ++y) {
      for (int dx = -4; dx <= 4; ++dx) {
        const double t = -kPi + ((i + 0.5) * quarter.width + dx) * 2 * kPi / kColumns;
        const double b = (rows / 2 - y) * 2 * kPi / kColumns;
        shown += quarter.bytes[3 * std::size_t(y * quarter.width + x + dx)] / 81.0;
        there += calibrate::light_from(calibrate::ring_direction(t, b)) / 81;
      }
    }
    EXPECT_NEAR(shown, there + 2, 3) << i;
  }
}

}  // namespace
}  // namespace biseam::tool
