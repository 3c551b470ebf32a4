#include "camera/lens.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "camera/trigonometry.hpp"
#include "support/cameras.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

TEST(Lens, TheUsualOneFitsItsCircle) {
  const Lens lens = usual_lens(1200, 1000, 190);
  EXPECT_EQ(599.5, lens.cx);
  EXPECT_EQ(499.5, lens.cy);
  EXPECT_NEAR(500, radius(lens, 95 * kDegree), 1e-9);
}

TEST(Lens, TheRadiusIsThePolynomial) {
  Lens lens = city_square().lens[0];
  lens.k[0] = 0.1;
  lens.k[1] = -0.02;
  lens.k[2] = 0.003;
  for (const double a : {0.0, 0.3, 1.0, 1.7}) {
    const double expected = 279.7 * (a + 0.1 * std::pow(a, 3) - 0.02 * std::pow(a, 5) + 0.003 * std::pow(a, 7));
    EXPECT_NEAR(expected, radius(lens, a), 1e-9);
    EXPECT_NEAR((radius(lens, a + 1e-5) - radius(lens, a - 1e-5)) / 2e-5, radius_slope(lens, a), 1e-5);
  }
}

TEST(Lens, TheAngleOfARadiusIsItsInverse) {
  RandomSource random;
  const double last = 103 * kDegree;
  for (int i = 0; i < 5000; ++i) {
    Lens lens = city_square().lens[0];
    for (double& k : lens.k) k = double(random.real_between(-0.02f, 0.05f));
    const double angle = double(random.real_between(0, 1)) * last;
    bool rises = true;
    for (int j = 0; j <= 100; ++j) rises = rises && radius_slope(lens, last * j / 100) > 0.01 * lens.p;
    if (!rises) continue;
    EXPECT_NEAR(angle, angle_of_radius(lens, radius(lens, angle), last), 1e-12);
  }
}

TEST(Lens, TheInverseHoldsWhereNewtonsStepsLeaveTheInterval) {
  Lens lens = city_square().lens[0];
  lens.k[0] = -0.1;  // nearly flat at the limit
  const double last = 1.825;
  for (int i = 0; i <= 1000; ++i) {
    const double angle = last * i / 1000;
    EXPECT_NEAR(radius(lens, angle), radius(lens, angle_of_radius(lens, radius(lens, angle), last)), 1e-9);
  }
}

// All rounds to their end, whether anything is left to halve or not.
double angle_after_all_rounds(const Lens& lens, double wanted, double last) {
  double low = 0, high = last, angle = wanted / lens.p;
  for (int i = 0; i < 64; ++i) {
    if (!(angle > low && angle < high)) angle = 0.5 * (low + high);
    const double excess = radius(lens, angle) - wanted;
    if (excess == 0) return angle;
    (excess < 0 ? low : high) = angle;
    const double next = angle - excess / radius_slope(lens, angle);
    if (next == angle) return angle;
    angle = next;
  }
  return angle > low && angle < high ? angle : low;
}

// Each sixth of these radii makes Newton go to and fro between two neighbouring numbers.
TEST(Lens, TheInverseMayEndBeforeTheLastRound) {
  RandomSource random;
  const double last = 103 * kDegree;
  for (int i = 0; i < 20000; ++i) {
    Lens lens = city_square().lens[0];
    lens.k[0] = double(random.real_between(-0.02f, 0.05f));
    const double wanted = double(random.real_between(0, 1)) * 0.999 * radius(lens, last);
    ASSERT_EQ(angle_after_all_rounds(lens, wanted, last), angle_of_radius(lens, wanted, last)) << lens.k[0] << " " << wanted;
  }
}

TEST(Lens, OutsideTheInverseStaysAtTheEnds) {
  const Lens lens = city_square().lens[0];
  EXPECT_EQ(0.0, angle_of_radius(lens, -1, 1.5));
  EXPECT_EQ(0.0, angle_of_radius(lens, 0, 1.5));
  EXPECT_EQ(1.5, angle_of_radius(lens, 1e6, 1.5));
  EXPECT_EQ(0.0, angle_of_radius(lens, std::nan(""), 1.5));
}

TEST(Lens, ScalesWithItsPicture) {
  const Lens lens = scaled(city_square().lens[0], 1920, 1920);
  EXPECT_EQ(950.5, lens.cx);  // the middle of pixel 475 is where pixels 950 and 951 meet
  EXPECT_EQ(942.5, lens.cy);
  EXPECT_EQ(559.4, lens.p);
  EXPECT_EQ(206, lens.fov);
}

TEST(Lens, LightIsThePolynomialTimesTheGain) {
  Lens lens = city_square().lens[0];
  lens.vignette[0] = -0.05;
  lens.vignette[1] = -0.01;
  lens.gain[2] = 1.25;
  EXPECT_EQ(1.0, recorded_light(lens, 0, 0));
  EXPECT_NEAR(1.25 * (1 - 0.05 * 2.25 - 0.01 * 5.0625), recorded_light(lens, 2, 1.5), 1e-12);
}

}  // namespace
}  // namespace biseam::test
