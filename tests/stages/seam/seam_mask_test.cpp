#include "stages/seam/seam_mask.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <vector>

#include "stages/seam/images.hpp"

namespace biseam::test {
namespace {

using Samples = std::vector<int32_t>;

constexpr int32_t kUntouched = 7;

// A mask between guards, none of it written.
struct Mask {
  Mask(int width_, int height_)
      : width(width_),
        samples(int64_t{3} * width_ * height_, kUntouched),
        record(color_record(samples.data(), width_, height_)) {}

  int32_t at(int x, int y, int k) { return samples[3 * (int64_t{width} * y + x) + k]; }
  bool is_weighted(int x, int y) { return at(x, y, 0) == 64 && at(x, y, 1) == 64 && at(x, y, 2) == 64; }
  bool is_untouched(int x, int y) {
    return at(x, y, 0) == kUntouched && at(x, y, 1) == kUntouched && at(x, y, 2) == kUntouched;
  }

  int width;
  GuardedSamples samples;
  BlendImage record;
};

TEST(HasLabels, FromFiveByFiveOn) {
  EXPECT_TRUE(has_labels(5, 5));
  EXPECT_FALSE(has_labels(4, 9));
  EXPECT_FALSE(has_labels(9, 4));
  EXPECT_FALSE(has_labels(-9, 9));
}

TEST(FillSpan, IsClippedToTheMask) {
  constexpr int64_t kFar = int64_t{1} << 32;
  Mask mask(6, 3);
  fill_span(mask.record, 1, -kFar, 2);
  fill_span(mask.record, 1, 5, kFar);
  for (const int64_t y : {int64_t{-1}, int64_t{3}, kFar}) fill_span(mask.record, y, 0, 6);
  fill_span(mask.record, 0, 4, 4);
  fill_span(mask.record, 0, 6, 9);
  for (int y = 0; y < 3; ++y) {
    for (int x = 0; x < 6; ++x) {
      const bool written = y == 1 && (x < 2 || x == 5);
      EXPECT_TRUE(written ? mask.is_weighted(x, y) : mask.is_untouched(x, y)) << x << ", " << y;
    }
  }
}

TEST(FillSurroundings, TopRowsAreWeightedInTheirLeftHalf) {
  Mask mask(9, 7);
  fill_surroundings(mask.record, 7, -2);
  for (const int y : {0, 1}) {
    for (int x = 0; x < 9; ++x) EXPECT_TRUE(x < 4 ? mask.is_weighted(x, y) : mask.is_untouched(x, y)) << x << ", " << y;
  }
}

TEST(FillSurroundings, BottomRowsMisplaceTheirFirstSamples) {
  Mask mask(8, 7);
  fill_surroundings(mask.record, 7, -2);
  const Samples samples = mask.samples.values();
  constexpr int32_t u = kUntouched;
  // Samples 0 to 3 of the row, and samples 1 and 2 of pixels 0 to 3.
  const Samples expected{64, 64, 64, 64, 64, 64, u, 64, 64, u, 64, 64, u, u, u, u, u, u, u, u, u, u, u, u};
  for (const int y : {5, 6}) EXPECT_EQ(Samples(samples.begin() + 24 * y, samples.begin() + 24 * (y + 1)), expected);
}

TEST(FillSurroundings, BottomRowsAreThoseOfTheStripNotOfTheMask) {
  Mask mask(8, 9);
  fill_surroundings(mask.record, 7, -2);
  EXPECT_EQ(mask.at(0, 5, 0), 64);
  for (const int y : {7, 8}) {
    for (int x = 0; x < 8; ++x) EXPECT_TRUE(mask.is_untouched(x, y));
  }
}

TEST(FillSurroundings, ColumnsLeftOfTheStripAreWeightedToItsSecondColumn) {
  for (const int offset : {-2, -1, 0, 3}) {
    Mask mask(12, 7);
    fill_surroundings(mask.record, 7, offset);
    for (int y = 2; y < 5; ++y) {
      for (int x = 0; x < 12; ++x) EXPECT_TRUE(x <= offset + 1 ? mask.is_weighted(x, y) : mask.is_untouched(x, y)) << offset;
    }
  }
}

TEST(FillSurroundings, StripsOutsideTheMaskStayInsideIt) {
  for (const int height : {-5, 0, 1, 3, 100}) {
    for (const int64_t offset : {int64_t{std::numeric_limits<int>::min()}, int64_t{std::numeric_limits<int>::max()}}) {
      Mask mask(5, 4);
      fill_surroundings(mask.record, height, offset);
      for (int y = 2; y < 4; ++y) {
        // A left half that nothing but the bottom rows writes is not looked at.
        if (offset > 0 || y == height - 2 || y == height - 1) continue;
        for (int x = 0; x < 5; ++x) EXPECT_TRUE(mask.is_untouched(x, y)) << height;
      }
    }
  }
}

TEST(FillSourceSide, TakesTheLabelsOfTheInside) {
  Mask mask(12, 8);
  // Labels of a strip of 9 x 7 at column 2: stretches at the start, at the end, in the middle, all and none.
  const char* const labels[7] = {"sssssssss", "sssssssss", "..ss..s..", "...s.s...", "ssssssss.", "sssssssss", "sssssssss"};
  fill_source_side(mask.record, 7, 9, 2, [&](int32_t r, int32_t c) { return labels[r][c] == 's'; });
  for (int y = 0; y < 8; ++y) {
    for (int x = 0; x < 12; ++x) {
      const int c = x - 2;
      const bool written = y >= 2 && y < 5 && c >= 2 && c < 7 && labels[y][c] == 's';
      EXPECT_TRUE(written ? mask.is_weighted(x, y) : mask.is_untouched(x, y)) << x << ", " << y;
    }
  }
}

}  // namespace
}  // namespace biseam::test
