#include "calibrate/correlate.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "support/random_source.hpp"

namespace biseam::calibrate {
namespace {

cv::Mat1f random_light(int rows, int columns, test::RandomSource& random) {
  cv::Mat1f light(rows, columns);
  for (float& value : light) value = float(random.between(-1000, 1000)) / 400;
  return light;
}

double length_of(const cv::Mat1d& values) { return std::sqrt(values.dot(values)); }

cv::Mat1d without_mean(const cv::Mat1f& values) {
  cv::Mat1d exact(values);
  exact -= cv::sum(exact)[0] / double(exact.total());
  return exact;
}

double correlation(const cv::Mat1f& a, const cv::Mat1f& b) {
  const cv::Mat1d first = without_mean(a), second = without_mean(b);
  return first.dot(second) / (length_of(first) * length_of(second));
}

// Of the score at a place: as many roundings as samples and a few, of products whose sum is at most the length of what lies
// below the window.
double rounding(const cv::Mat1f& below) {
  return (double(below.total()) + 4) * std::ldexp(1, -23) * length_of(cv::Mat1d(below)) / length_of(without_mean(below));
}

TEST(Correlate, FindsTheBestOfAllPlaces) {
  test::RandomSource random;
  for (int repeat = 0; repeat < 60; ++repeat) {
    const cv::Mat1f window = random_light(random.between(2, 9), random.between(2, 9), random);
    const cv::Mat1f region = random_light(window.rows + random.between(0, 20), window.cols + random.between(0, 40), random);
    const BestPlace best = best_place(window, region);
    const auto below = [&](int x, int y) { return region(cv::Rect(x, y, window.cols, window.rows)); };
    ASSERT_LE(best.at.x, region.cols - window.cols);
    ASSERT_LE(best.at.y, region.rows - window.rows);
    double most = 0, off = 0;
    for (int y = 0; y + window.rows <= region.rows; ++y) {
      for (int x = 0; x + window.cols <= region.cols; ++x) {
        most = std::max(most, correlation(window, below(x, y)));
        off = std::max(off, rounding(below(x, y)));
      }
    }
    EXPECT_NEAR(best.score, most, off);
    const double there = correlation(window, below(best.at.x, best.at.y));
    EXPECT_NEAR(best.score, best.score > 0 ? there : 0, off);
  }
}

TEST(Correlate, BrightnessAndContrastDoNotCount) {
  test::RandomSource random;
  const cv::Mat1f region = random_light(30, 50, random);
  const cv::Rect there(37, 11, 8, 7);
  const cv::Mat1f window = 3 * region(there) + 5;
  const BestPlace best = best_place(window, region);
  EXPECT_EQ(best.at, there.tl());
  EXPECT_NEAR(best.score, 1, 3 * rounding(region(there)) + rounding(window));
}

TEST(Correlate, FlatThingsAreNowhere) {
  test::RandomSource random;
  const cv::Mat1f light = random_light(30, 50, random), flat(7, 8, 1.5f), gray(30, 50, -2.0f);
  EXPECT_EQ(best_place(flat, light).score, 0);
  EXPECT_EQ(best_place(light(cv::Rect(3, 4, 8, 7)), gray).score, 0);
}

}  // namespace
}  // namespace biseam::calibrate
