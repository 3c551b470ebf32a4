#include "calibrate/match.hpp"

#include <gtest/gtest.h>

#include "tool/calibrate/world.hpp"

namespace biseam::calibrate {
namespace {

constexpr StripSize kSize{960, 81};

Strip textured(double dx, double dy, float gain) {
  Strip strip{cv::Mat1f(kSize.rows, kSize.columns()), cv::Mat1b(kSize.rows, kSize.columns(), static_cast<unsigned char>(255))};
  for (int y = 0; y < kSize.rows; ++y) {
    for (int x = 0; x < kSize.columns(); ++x) {
      strip.light(y, x) = gain * float(noise_at((x - dx) / 5, (y - dy) / 5, 0.5) + noise_at((x - dx) / 11, (y - dy) / 11, 7.5));
    }
  }
  return strip;
}

TEST(Match, DisplacementIsFoundToHundredthsWhateverTheGain) {
  const double dx = 3.37, dy = 6.81;
  const std::vector<StripMatch> matches =
      find_matches(textured(0, 0, 1), textured(dx, dy, 1.4f), kSize, {8, 4, 12, 8, 320, 0.8, true});
  ASSERT_GT(matches.size(), 150u);
  double square = 0;
  for (const StripMatch& match : matches) {
    const cv::Point2d off = match.at[1] - match.at[0] - cv::Point2d(dx, dy);
    EXPECT_LT(cv::norm(off), 0.2);
    square += off.dot(off) / double(matches.size());
  }
  EXPECT_LT(std::sqrt(square), 0.04);
}

TEST(Match, DeviationsTellWhereNoiseIs) {
  const double dx = 3.37, dy = 6.81;
  Strip other = textured(dx, dy, 1);
  const auto is_noisy = [](double x) { return x > kSize.columns() / 2.0; };
  for (int y = 0; y < kSize.rows; ++y) {
    for (int x = 0; x < kSize.columns(); ++x) {
      other.light(y, x) += float((is_noisy(x) ? 0.4 : 0.02) * (hashed(x, y, 3) - 0.5));
    }
  }
  double square[2] = {}, said[2] = {}, count[2] = {};
  for (const StripMatch& match : find_matches(textured(0, 0, 1), other, kSize, {8, 4, 12, 8, 640, 0.8, true})) {
    const cv::Point2d off = match.at[1] - match.at[0] - cv::Point2d(dx, dy);
    const int noisy = is_noisy(match.at[1].x);
    square[noisy] += off.dot(off);
    said[noisy] += match.deviation.dot(match.deviation);
    count[noisy] += 1;
  }
  for (int noisy = 0; noisy < 2; ++noisy) ASSERT_GT(count[noisy], 50);
  const double there = std::sqrt(square[1] / count[1]), usual = std::sqrt(square[0] / count[0]);
  const double said_there = std::sqrt(said[1] / count[1]), said_usual = std::sqrt(said[0] / count[0]);
  EXPECT_GT(said_there, 2 * said_usual);
  EXPECT_LT(there / usual, 2 * said_there / said_usual);
  EXPECT_GT(there / usual, 0.3 * said_there / said_usual);
}

TEST(Match, CornersAreSpreadRoundTheRing) {
  const std::vector<StripMatch> matches =
      find_matches(textured(0, 0, 1), textured(1, 1, 1), kSize, {4, 4, 4, 8, 320, 0.8, true});
  int count[8] = {};
  for (const StripMatch& match : matches) ++count[int((match.at[0].x - StripSize::kRepeated) / kSize.around * 8) & 7];
  for (const int n : count) EXPECT_GT(n, 10);
}

TEST(Match, WhatIsNotThereIsNotMatched) {
  Strip other = textured(0, 0, 1);
  for (int y = 0; y < kSize.rows; ++y) {
    for (int x = 0; x < kSize.columns(); ++x) other.light(y, x) = float(noise_at(x / 5.0, y / 5.0, 90.5));
  }
  EXPECT_LT(find_matches(textured(0, 0, 1), other, kSize, {8, 8, 8, 8, 320, 0.8, true}).size(), 5u);
}

TEST(Match, NothingWhereNothingIsSeen) {
  Strip unseen = textured(0, 0, 1);
  unseen.seen.setTo(0);
  EXPECT_TRUE(find_matches(textured(0, 0, 1), unseen, kSize, {8, 8, 8, 8, 320, 0.8, true}).empty());
  EXPECT_TRUE(find_matches(unseen, textured(0, 0, 1), kSize, {8, 8, 8, 8, 320, 0.8, true}).empty());
}

}  // namespace
}  // namespace biseam::calibrate
