#include "text/lettering.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "support/random_source.hpp"

namespace biseam::tool {
namespace {

TEST(Lettering, InksItsStrokesAndNothingElse) {
  const Lettering bar("I", 0.2);
  EXPECT_EQ(bar.ink(0, 0.5, 0.01), 1);
  EXPECT_EQ(bar.ink(0.05, 0.5, 0.01), 1);
  EXPECT_NEAR(bar.ink(0.1, 0.5, 0.02), 0.5, 1e-9);
  EXPECT_EQ(bar.ink(0.15, 0.5, 0.01), 0);
  EXPECT_EQ(bar.ink(0, 1.2, 0.01), 0);
}

TEST(Lettering, SetsSmallLettersAsCapitalsAndUnknownOnesAsBlanks) {
  EXPECT_EQ(Lettering("seam").width(), Lettering("SEAM").width());
  EXPECT_EQ(Lettering("A~B").width(), Lettering("A B").width());
  EXPECT_EQ(Lettering("").width(), 0);
  EXPECT_EQ(Lettering("").ink(0, 0.5, 0.1), 0);
}

TEST(Lettering, HasEveryCapitalAndDigit) {
  for (const char letter : std::string("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-+.,:/()=")) {
    const Lettering glyph(std::string(1, letter));
    int inked = 0;
    for (double y = 0; y <= 1.25; y += 0.05) {
      for (double x = 0; x <= 1; x += 0.05) inked += glyph.ink(x, y, 0.05) > 0.5;
    }
    EXPECT_GT(inked, letter == '.' ? 1 : 3) << letter;
  }
}

// Letters are as wide as their strokes; 2.6 ninths of their height lie between two, and 4.5 are a blank.
TEST(Lettering, IsAsWideAsItsLettersAndTheSpacesBetween) {
  EXPECT_EQ(Lettering("I").width(), 0);
  EXPECT_NEAR(Lettering("L").width(), 5 / 9.0, 1e-12);
  EXPECT_NEAR(Lettering("LIT").width(), (5 + 2.6 + 0 + 2.6 + 6) / 9, 1e-12);
  EXPECT_NEAR(Lettering("I I").width(), (2.6 + 4.5) / 9, 1e-12);
  EXPECT_NEAR(Lettering("\xff\x01I").width(), 9 / 9.0, 1e-12) << "what has no glyph is a blank";
}

double distance_to_line(double x, double y, double x0, double y0, double x1, double y1) {
  double least = 1e30;
  for (int n = 0; n <= 4096; ++n) {
    const double share = n / 4096.0;
    least = std::min(least, std::hypot(x - x0 - share * (x1 - x0), y - y0 - share * (y1 - y0)));
  }
  return least;
}

// The second letter of LL: two strokes, of which one point in 4096 is tried each.
TEST(Lettering, InkIsTheShareOfTheSpotWithinHalfAStroke) {
  test::RandomSource random;
  const Lettering text("LL", 0.2);
  const double left = 7.6 / 9;
  for (int n = 0; n < 300; ++n) {
    const double x = left + double(random.real_between(0.1F, 1)), y = double(random.real_between(-0.3F, 1.3F));
    const double diameter = double(random.real_between(0.01F, 0.5F));
    const double away = std::min(distance_to_line(x, y, left, 0, left, 1), distance_to_line(x, y, left, 1, left + 5 / 9.0, 1));
    const double first = distance_to_line(x, y, 0, 1, 5 / 9.0, 1);
    const double wanted = std::clamp((0.1 + diameter / 2 - std::min(away, first)) / diameter, 0.0, 1.0);
    EXPECT_NEAR(text.ink(x, y, diameter), wanted, 1e-4 / diameter) << x << " " << y << " " << diameter;
  }
}

TEST(Lettering, ACommaReachesBelowTheLineAndOthersDoNot) {
  const auto lowest = [](const char* text) {
    double y = 2;
    while (y > -1 && Lettering(text).ink(0.02, y, 0.01) < 0.5) y -= 0.01;
    return y;
  };
  EXPECT_NEAR(lowest(","), 11 / 9.0 + 0.075, 0.02);
  EXPECT_NEAR(lowest("I"), 1 + 0.075, 0.02);
}

TEST(Lettering, InkStaysAShareForSpotsOfAnySize) {
  const Lettering text("SEAM 0");
  for (const double diameter : {0.0, 1e-12, 0.3, 5.0, 1e6}) {
    for (double x = -1; x < text.width() + 1; x += 0.07) {
      const double ink = text.ink(x, 0.5, diameter);
      EXPECT_TRUE(ink >= 0 && ink <= 1) << x << " " << diameter;
    }
  }
}

}  // namespace
}  // namespace biseam::tool
