#include "ring/near/disparity.hpp"

#include <gtest/gtest.h>

#include "ring/near/own_views.hpp"

namespace biseam::test {
namespace {

constexpr StripShape kShape{960, 56};

// A thing between two rows, before what is far.
std::function<double(int)> thing(int first, int end, double disparity) {
  return [=](int t) { return t >= first && t < end ? disparity : 0.0; };
}

// The share of rows [first, end) whose disparity is as near to the truth as 1.5 columns of the panorama, of which four are a
// sample.
double share_of_good(const std::vector<double>& found, const std::function<double(int)>& truth, int first, int end) {
  int good = 0;
  for (int t = first; t < end; ++t) good += std::abs(found[static_cast<std::size_t>(t)] - truth(t)) <= 1.5 / 4;
  return double(good) / (end - first);
}

TEST(Disparity, OfThingsAtAnyDistanceIsFound) {
  RandomSource random;
  for (const double metres : {0.45, 0.7, 1.0, 1.6, 3.0}) {
    const double samples = 0.03 / metres * 960 / (2 * 3.14159265);
    for (const OwnViews::Recording& how :
         {OwnViews::Recording{}, {40, 0.73, 0, false}, {40, 1.3, 3, false}, {15, 0.9, 1, false}}) {
      const auto truth = thing(300, 380, samples);
      const std::vector<double> found = disparities_of({random, kShape, truth, how});
      EXPECT_GE(share_of_good(found, truth, 300, 380), 0.9) << metres << " m, gain " << how.gain1 << ", noise " << how.noise;
      EXPECT_GE(share_of_good(found, truth, 400, 960), 0.99) << metres;
      EXPECT_GE(share_of_good(found, truth, 0, 280), 0.99) << metres;
    }
  }
}

TEST(Disparity, IsFoundAcrossTheFirstRow) {
  RandomSource random;
  const auto truth = [](int t) { return t < 40 || t >= 930 ? 5.3 : 0.0; };
  const std::vector<double> found = disparities_of({random, kShape, truth, {}});
  EXPECT_GE(share_of_good(found, truth, 0, 37), 0.99);
  EXPECT_GE(share_of_good(found, truth, 933, 960), 0.99);
}

TEST(Disparity, OfSlopesIsFoundBetweenTheSamples) {
  RandomSource random;
  const auto truth = [](int t) { return 3 + 2.5 * std::sin(t * 2 * 3.14159265 / 960); };
  const std::vector<double> found = disparities_of({random, kShape, truth, {}});
  EXPECT_EQ(share_of_good(found, truth, 0, 960), 1);
  double sum = 0;
  for (int t = 0; t < 960; ++t) sum += std::abs(found[static_cast<std::size_t>(t)] - truth(t));
  EXPECT_LT(sum / 960, 0.08);
}

TEST(Disparity, OfWhatIsFarIsNone) {
  RandomSource random;
  const auto none = [](int) { return 0.0; };
  for (const OwnViews::Recording& how : {OwnViews::Recording{}, {40, 0.73, 0, false}, {40, 1, 4, false}, {8, 1, 1, false}}) {
    for (const double d : disparities_of({random, kShape, none, how}))
      ASSERT_LE(d, how.noise > 1 ? 0.25 : 0) << how.contrast << " under " << how.noise;
  }
}

// Strips of a small panorama with soft things, the same in both lenses but for what shade(lens, column) makes of them.
void expect_none_in_narrow_strips(const std::function<double(int lens, int b)>& shade) {
  RandomSource random;
  for (int round = 0; round < 50; ++round) {
    OwnViews views(random, {240, 10}, [](int) { return 0.0; }, {0, 1, 0, false});
    const double along = random.real_between(0.02F, 0.3F), across = random.real_between(0.1F, 0.6F);
    for (int i = 0; i < 2 * 2400; ++i) {
      const int lens = i / 2400, t = i % 2400 / 10, b = i % 10;
      const double soft = 7000 + 3000 * std::sin(along * t) * std::sin(across * b);
      views.luma[lens][std::size_t(i % 2400)] = static_cast<int16_t>(soft * shade(lens, b));
    }
    for (const double d : disparities_of(views)) ASSERT_LT(d, 0.15) << along << ", " << across;
  }
}

// Narrow strips have some of the black beyond the image circles in their outermost columns.
TEST(Disparity, OfWhatIsFarIsNoneBesideBlackRims) {
  expect_none_in_narrow_strips([](int lens, int b) { return b == (lens == 0 ? 9 : 0) ? 0.0 : 1.0; });
}

// Of soft things one sample apart looks nearly as good as none, and with an edge beside them two look much worse.
TEST(Disparity, OfWhatIsFarIsNoneBesideEdges) {
  expect_none_in_narrow_strips([](int, int b) { return b < 2 ? 1.5 : 1.0; });
}

// In black frames, clipped skies, plain walls, with a lens covered, or under nothing but noise.
TEST(Disparity, IsNoneWhereNothingIsKnown) {
  RandomSource random;
  const auto near = [](int) { return 4.0; };
  for (const OwnViews::Recording& how : {OwnViews::Recording{0, 0, 0, false},
                                         {0, 1, 0, false},
                                         {0, 1, 1, false},
                                         {0, 3, 0, false},
                                         {40, 1, 0, true},
                                         {40, 1, 2, true}}) {
    for (const double d : disparities_of({random, kShape, near, how})) ASSERT_EQ(d, 0) << how.contrast << how.noise;
  }
}

// Edges along the rows say nothing about what lies across them.
TEST(Disparity, OfStripesAcrossIsNone) {
  RandomSource random;
  OwnViews views(random, kShape, [](int) { return 0.0; }, {0, 1, 1, false});
  for (auto& luma : views.luma) {
    for (std::size_t i = 0; i < luma.size(); ++i) luma[i] = static_cast<int16_t>(luma[i] + (i / 56 % 9 < 4 ? 3000 : 0));
  }
  for (const double d : disparities_of(views)) ASSERT_EQ(d, 0);
}

TEST(Disparity, OfLargerStripsIsFoundInSamplesOfTheSearch) {
  RandomSource random;
  const auto truth = thing(600, 800, 9.0);
  OwnViews views(random, {1920, 112}, truth, {});
  const std::vector<double> found = disparities_of(views);
  ASSERT_EQ(found.size(), 960u);
  const auto halves = thing(300, 400, 4.5);
  EXPECT_GE(share_of_good(found, halves, 300, 400), 0.9);
  EXPECT_GE(share_of_good(found, halves, 420, 960), 0.98);
}

}  // namespace
}  // namespace biseam::test
