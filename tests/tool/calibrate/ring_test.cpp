#include "calibrate/ring.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "support/random_source.hpp"
#include "tool/calibrate/matches.hpp"

namespace biseam::calibrate {
namespace {

// What each lens draws in the direction that it sees.
Match seen_at(const Camera& camera, const RingPoint& first, const RingPoint& second) {
  const ImagePoint at[2] = {Projector(camera, 0).project(ring_direction(first.t, first.b)),
                            Projector(camera, 1).project(ring_direction(second.t, second.b))};
  return {0, {{at[0].x, at[0].y}, {at[1].x, at[1].y}}};
}

TEST(Ring, DirectionsHaveTheirAngles) {
  for (int i = 0; i < 24; ++i) {
    const double t = (i - 11.5) * kPi / 12, b = 0.02 * (i % 7 - 3);
    const Vec3 d = ring_direction(t, b);
    EXPECT_NEAR(d.x * d.x + d.y * d.y + d.z * d.z, 1, 1e-12);
    EXPECT_NEAR(std::atan2(d.y, d.x), t, 1e-12);
    EXPECT_NEAR(std::asin(d.z), b, 1e-12);
  }
}

// What both lenses see in one direction leaves nothing; where it is, is told by its angles.
TEST(Ring, FarThingsLeaveNothing) {
  const Values values = some_values();
  const Camera camera = camera_of(values, kFrame);
  test::RandomSource random;
  for (int i = 0; i < 200; ++i) {
    const RingPoint at{random.real_between(-3.14f, 3.14f), random.real_between(-0.1f, 0.1f)};
    const Remainder left = remainders_of(values, kFrame, {seen_at(camera, at, at)})[0];
    EXPECT_NEAR(left.off.t, 0, 1e-5);
    EXPECT_NEAR(left.off.b, 0, 1e-5);
    EXPECT_NEAR(left.at.t, at.t, 1e-8);
    EXPECT_NEAR(left.at.b, at.b, 1e-8);
  }
}

// Things drawn at different angles, on both sides of where the angles begin again, too: pixels of a panorama that is 3840 wide
// along the ring, across it so many times more as the lenses' radii grow faster there than usual.
TEST(Ring, RemaindersAreTheDifferencesOfAngles) {
  const Values values = some_values();
  const Camera camera = camera_of(values, kFrame);
  test::RandomSource random;
  for (int i = 0; i < 200; ++i) {
    const RingPoint first{i % 4 == 0   ? 3.141
                          : i % 4 == 1 ? -3.141
                                       : random.real_between(-3.1f, 3.1f),
                          random.real_between(-0.1f, 0.1f)};
    const double along = random.real_between(-0.03f, 0.03f), across = random.real_between(-0.02f, 0.02f);
    const Remainder left = remainders_of(values, kFrame, {seen_at(camera, first, {first.t + along, first.b - across})})[0];
    const double latitude = first.b - across / 2;
    EXPECT_NEAR(left.off.t, along * std::cos(latitude) * 3840 / (2 * kPi), 1e-4) << first.t;
    EXPECT_NEAR(left.off.b, across * across_scale(camera) * 3840 / (2 * kPi), 1e-4) << first.t;
  }
}

TEST(Ring, AcrossCountsByHowFastTheRadiiGrow) {
  const Camera camera = camera_of(some_values(), kFrame);
  double growth = 0;
  for (const Lens& lens : camera.lens) {
    constexpr double kApart = 1e-4;
    growth += (radius(lens, kPi / 2 + kApart) - radius(lens, kPi / 2 - kApart)) / (2 * kApart) / 2;
  }
  EXPECT_NEAR(across_scale(camera), growth / (0.3 * 960), 1e-6);
}

// A camera whose circle ends before what a lens drew explains nothing of it.
TEST(Ring, WhatALensCantDrawIsFarOff) {
  const Values values = some_values();
  const Camera camera = camera_of(values, kFrame);
  Match match = seen_at(camera, {0.4, 0}, {0.4, 0});
  match.at[1].x = camera.lens[1].cx + radius(camera.lens[1], (values[kRim] + 11) * kDegree);
  match.at[1].y = camera.lens[1].cy;
  const Remainder left = remainders_of(values, kFrame, {match})[0];
  EXPECT_GT(std::abs(left.off.t), 3840);
  EXPECT_GT(std::abs(left.off.b), 3840);
}

TEST(Ring, SlopesAreThoseOfTheRemainders) {
  const Values values = some_values();
  const std::vector<Match> matches = see(values, 8);
  const std::vector<Slopes> slopes = slopes_of(values, kFrame, matches);
  for (std::size_t p = 0; p < kParameters; ++p) {
    const double step = 1e-3 * kSteps[p];
    Values low = values, high = values;
    low[p] -= step;
    high[p] += step;
    const std::vector<Remainder> below = remainders_of(low, kFrame, matches), above = remainders_of(high, kFrame, matches);
    for (std::size_t i = 0; i < matches.size(); ++i) {
      const double t = (above[i].off.t - below[i].off.t) / (2 * step), b = (above[i].off.b - below[i].off.b) / (2 * step);
      const double unit = 1 / kSteps[p];
      EXPECT_NEAR(slopes[i].t[p], t, 0.002 * unit) << "parameter " << p;
      EXPECT_NEAR(slopes[i].b[p], b, 0.002 * unit) << "parameter " << p;
    }
  }
}

}  // namespace
}  // namespace biseam::calibrate
