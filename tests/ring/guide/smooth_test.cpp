#include "ring/guide/smooth.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "ring/guide/guide_fixture.hpp"

namespace biseam::test {
namespace {

using namespace ring;

using Guides = std::vector<std::vector<uint8_t>>;

template <class ValuesOf>
Guides clip_of(int frames, const ValuesOf& values_of) {
  Guides guides;
  for (int i = 0; i < frames; ++i) guides.push_back(guide_of(values_of(i)));
  return guides;
}

std::vector<uint8_t> smoothed(const Guides& guides, int index) {
  std::vector<const void*> all;
  for (const auto& guide : guides) all.push_back(guide.data());
  std::vector<uint8_t> made(guides[0].size());
  smooth_guide(kGuideShape, all.data(), static_cast<int>(all.size()), index, made.data());
  EXPECT_EQ(check_guide(kGuideShape, made.data()), GuideTrouble::none) << index;
  return made;
}
int log_of(const Guides& guides, int index) {
  return GuideReader(kGuideShape, smoothed(guides, index).data()).sector(3).logs[1];
}
int disparity_of(const Guides& guides, int index) {
  return GuideReader(kGuideShape, smoothed(guides, index).data()).disparity(5);
}
int row_of(const Guides& guides, int index) { return GuideReader(kGuideShape, smoothed(guides, index).data()).row(9); }

GuideValues lit(int log, int count = 500) {
  GuideValues values;
  values.light = {count, {log, log, log}, 0, 1000};
  return values;
}

TEST(SmoothGuide, OfWhatIsStillIsTheSame) {
  const Guides guides = clip_of(9, [](int) { return GuideValues(); });
  for (int i = 0; i < 9; ++i) EXPECT_EQ(smoothed(guides, i), guides[0]) << i;
}

TEST(SmoothGuide, ReachesAsFarAsAnyOfItsParts) {
  GuideShape shape = kGuideShape;
  EXPECT_EQ(guide_reach(shape), 7) << "the seam";
  shape.light_span = 15;
  EXPECT_EQ(guide_reach(shape), 15);
  shape.steady_seam = false;
  shape.light_span = 0;
  EXPECT_EQ(guide_reach(shape), 3) << "near things";
  shape.near_length = 0;
  EXPECT_EQ(guide_reach(shape), 0);
}

TEST(SmoothGuide, DependsOnNothingFartherAwayThanItsReach) {
  const auto values_of = [](int i) {
    GuideValues values = lit(i * 7 % 50, 300 + i);
    values.disparity = i * 40 % 900;
    values.row = (3 + i % 3) * kGuideRow;
    return values;
  };
  const Guides whole = clip_of(30, values_of);
  const int reach = guide_reach(kGuideShape);
  const Guides part(whole.begin() + 12 - reach, whole.begin() + 12 + reach + 1);
  EXPECT_EQ(smoothed(part, reach), smoothed(whole, 12));
  const Guides less(part.begin() + 1, part.end()), later(part.begin(), part.end() - 1);
  EXPECT_TRUE(smoothed(less, reach - 1) == smoothed(whole, 12)) << "the seam looks ahead alone";
  EXPECT_NE(smoothed(later, reach), smoothed(whole, 12));
}

TEST(SmoothGuide, LightThatDriftsIsNotLate) {
  const Guides guides = clip_of(40, [](int i) { return lit(10 * i); });
  for (int i = 5; i < 35; ++i) EXPECT_EQ(log_of(guides, i), 10 * i) << i;
}

TEST(SmoothGuide, LightThatTremblesIsStilled) {
  const Guides guides = clip_of(40, [](int i) { return lit(100 + (i % 2 == 0 ? 22 : -22)); });
  for (int i = 5; i < 35; ++i) EXPECT_NEAR(log_of(guides, i), 100, 2) << i;
}

TEST(SmoothGuide, LightThatStepsIsFollowedAtOnce) {
  const Guides guides = clip_of(40, [](int i) { return lit(i < 20 ? 0 : 1000); });
  for (int i = 0; i < 40; ++i) EXPECT_EQ(log_of(guides, i), i < 20 ? 0 : 1000) << i;
}

TEST(SmoothGuide, AFlashIsNotFollowed) {
  const Guides guides = clip_of(40, [](int i) { return lit(i == 20 ? 3000 : 50); });
  for (int i = 0; i < 40; ++i) EXPECT_EQ(log_of(guides, i), 50) << i;
}

TEST(SmoothGuide, FramesThatKnowNothingAreBridged) {
  const Guides guides = clip_of(40, [](int i) {
    GuideValues values = i == 20 ? lit(0, 0) : lit(200);
    values.disparity = i == 20 ? 0 : 700;
    return values;
  });
  for (int i = 16; i < 25; ++i) {
    EXPECT_EQ(log_of(guides, i), 200) << i;
    EXPECT_EQ(disparity_of(guides, i), 700) << i;
  }
  const Guides dark = clip_of(12, [](int) { return lit(0, 0); });
  EXPECT_EQ(GuideReader(kGuideShape, smoothed(dark, 6).data()).sector(0).count, 0);
}

TEST(SmoothGuide, NothingGoesAcrossACut) {
  const auto values_of = [](int i) {
    GuideValues values = lit(i < 20 ? 0 : 100);
    values.starts = i == 20;
    values.disparity = i < 20 ? 100 : 900;
    values.row = (i < 20 ? 3 : 5) * kGuideRow;
    return values;
  };
  const Guides guides = clip_of(40, values_of);
  for (int i = 0; i < 40; ++i) EXPECT_EQ(smoothed(guides, i), guide_of(values_of(i))) << i;
  EXPECT_TRUE(GuideReader(kGuideShape, smoothed(guides, 20).data()).starts());
}

TEST(SmoothGuide, WhatPassesIsNotLate) {
  const Guides guides = clip_of(40, [](int i) {
    GuideValues values;
    values.disparity = i >= 12 && i < 28 ? 800 : 0;
    return values;
  });
  const auto half = [&](int i) { return disparity_of(guides, i) + disparity_of(guides, i - 1); };
  EXPECT_EQ(half(12), 800);
  EXPECT_EQ(half(28), 800);
  int before = 0;
  for (int i = 0; i < 40; ++i) {
    const int now = disparity_of(guides, i);
    EXPECT_LE(std::abs(now - before), 400) << i;
    before = now;
  }
  EXPECT_EQ(disparity_of(guides, 20), 800);
}

// Paths are of frames up to 7 before.
TEST(SmoothGuide, SeamsLieInTheMiddleOfWhatFoundThem) {
  const Guides guides = clip_of(40, [](int i) {
    GuideValues values;
    values.row = 3 * kGuideRow + std::max(0, i - 4) * 8;
    return values;
  });
  for (int i = 5; i < 30; ++i) EXPECT_EQ(row_of(guides, i), 3 * kGuideRow + (i - 4) * 8 + 28) << i;
  for (int i = 33; i < 40; ++i) EXPECT_EQ(row_of(guides, i), row_of(guides, 32)) << "the end";
}

TEST(SmoothGuide, FreeSeamsAreTheFramesOwn) {
  GuideShape shape = kGuideShape;
  shape.steady_seam = false;
  Guides guides;
  std::vector<const void*> all;
  for (int i = 0; i < 9; ++i) {
    GuideValues values;
    values.row = (3 + i % 3) * kGuideRow;
    guides.push_back(guide_of(values, shape));
  }
  for (const auto& guide : guides) all.push_back(guide.data());
  std::vector<uint8_t> made(guides[0].size());
  for (int i = 0; i < 9; ++i) {
    smooth_guide(shape, all.data(), 9, i, made.data());
    EXPECT_EQ(GuideReader(shape, made.data()).row(0), (3 + i % 3) * kGuideRow);
  }
}

}  // namespace
}  // namespace biseam::test
