#include "base/panorama_layout.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>

namespace biseam::test {
namespace {

PanoramaLayout layout(int width, int feather, int trans_width) {
  StitchConfig config{};
  config.out_w[0] = width;
  config.feather = feather;
  config.trans_width = trans_width;
  return layout_of(config);
}

TEST(PanoramaLayout, Example) {
  const PanoramaLayout l = layout(1920, 16, 32);
  EXPECT_EQ(64, l.band_width);
  EXPECT_EQ(96, l.pair_width);
  const int64_t strips[] = {0, 464, 1424}, widths[] = {496, 992, 496};
  const int64_t plain[] = {0, 528, 1488}, plain_widths[] = {432, 864, 432};
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(strips[i], l.strip_columns[i]);
    EXPECT_EQ(widths[i], l.strip_widths[i]);
    EXPECT_EQ(plain[i], l.plain_columns[i]);
    EXPECT_EQ(plain_widths[i], l.plain_widths[i]);
  }
  EXPECT_EQ(432, l.pair_columns[0]);
  EXPECT_EQ(1392, l.pair_columns[1]);
}

TEST(PanoramaLayout, PairsLieAroundTheSeamsAndTileThePanorama) {
  for (int width = 400; width < 440; ++width) {
    const int feather = width % 7, trans_width = width % 11;
    const PanoramaLayout l = layout(width, feather, trans_width);
    EXPECT_EQ(width / 4, l.seams[0]);
    EXPECT_EQ(3 * width / 4, l.seams[1]);
    for (int i = 0; i < 2; ++i) {
      EXPECT_EQ(l.seams[i] - feather - trans_width, l.pair_columns[i]);
      EXPECT_EQ(l.seams[i] + feather + trans_width, l.plain_columns[i + 1]);
      EXPECT_EQ(l.seams[i] + feather, l.strip_columns[i] + l.strip_widths[i]);
      EXPECT_EQ(l.seams[i] - feather, l.strip_columns[i + 1]);
    }
    EXPECT_EQ(width, l.plain_columns[2] + l.plain_widths[2]);
  }
}

TEST(PanoramaLayout, ExtremesStayWithin64Bits) {
  const PanoramaLayout l = layout(INT32_MAX, INT32_MAX, INT32_MAX);
  EXPECT_EQ(4 * int64_t{INT32_MAX}, l.pair_width);
  EXPECT_EQ(3 * int64_t{INT32_MIN}, layout(0, INT32_MIN, INT32_MIN).band_width);
}

}  // namespace
}  // namespace biseam::test
