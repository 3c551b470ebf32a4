#include "camera/trigonometry.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "support/random_source.hpp"

namespace biseam::test {
namespace {

constexpr long double kPiLong = 3.14159265358979323846264338327950288L;
// 1e-12 is promised; hosts whose long double is a double check to a few of its roundings, too.
constexpr double kBound = 2e-15;

double sine_error(double angle) {
  const SineCosine got = sine_cosine(angle);
  const long double s = std::sin(static_cast<long double>(angle)), c = std::cos(static_cast<long double>(angle));
  return std::fmax(double(std::fabs(got.sine - s)), double(std::fabs(got.cosine - c)));
}

// In relation to results above 1.
double arctangent_error(double y, double x) {
  const long double expected = std::atan2(static_cast<long double>(y), static_cast<long double>(x));
  return double(std::fabs(arctangent(y, x) - expected) / std::fmax(1.0L, std::fabs(expected)));
}

TEST(SineCosineAccuracy, IsRightDensely) {
  double worst = 0;
  for (int i = -400000; i <= 400000; ++i) worst = std::fmax(worst, sine_error(i * 2.5e-5));
  EXPECT_LT(worst, kBound);
}

TEST(SineCosineAccuracy, IsRightAtRandomAndFarOut) {
  RandomSource random;
  double worst = 0;
  for (int i = 0; i < 200000; ++i) {
    const double fraction = random.word() / 4294967296.0 + random.word() / 4294967296.0 / 4294967296.0;
    worst = std::fmax(worst, sine_error((fraction - 0.5) * std::pow(10.0, i % 7)));
  }
  EXPECT_LT(worst, kBound);
}

TEST(SineCosineAccuracy, IsRightWhereTheQuadrantChanges) {
  double worst = 0;
  for (int quarter = -4000; quarter <= 4000; ++quarter) {
    const double middle = double(quarter * (kPiLong / 4));
    for (const double angle : {std::nextafter(middle, -1e9), middle, std::nextafter(middle, 1e9)}) {
      worst = std::fmax(worst, sine_error(angle));
    }
  }
  EXPECT_LT(worst, kBound);
  EXPECT_EQ(0.0, sine_cosine(0).sine);
  EXPECT_EQ(1.0, sine_cosine(0).cosine);
}

TEST(ArctangentAccuracy, IsRightDenselyAllRound) {
  double worst = 0;
  for (int i = 0; i < 800000; ++i) {
    const double angle = i * (2 * kPi / 800000), size = std::pow(10.0, i % 5 - 2);
    worst = std::fmax(worst, arctangent_error(size * std::sin(angle), size * std::cos(angle)));
  }
  EXPECT_LT(worst, kBound);
}

TEST(ArctangentAccuracy, IsRightAtRandom) {
  RandomSource random;
  double worst = 0;
  for (int i = 0; i < 200000; ++i) {
    const double y = int32_t(random.word()) * std::pow(2.0, random.between(-60, 60));
    const double x = int32_t(random.word()) * std::pow(2.0, random.between(-60, 60));
    worst = std::fmax(worst, arctangent_error(y, x));
  }
  EXPECT_LT(worst, kBound);
}

TEST(Arctangent, TheAxesAreExact) {
  EXPECT_EQ(0.0, arctangent(0, 0));
  EXPECT_EQ(0.0, arctangent(0, 3));
  EXPECT_EQ(kPi, arctangent(0, -3));
  EXPECT_EQ(kPi, arctangent(-0.0, -3));
  EXPECT_EQ(kPi / 2, arctangent(2, 0));
  EXPECT_EQ(-kPi / 2, arctangent(-2, 0));
  EXPECT_EQ(kPi / 4, arctangent(5, 5));
  EXPECT_EQ(-3 * kPi / 4, arctangent(-5, -5));
}

}  // namespace
}  // namespace biseam::test
