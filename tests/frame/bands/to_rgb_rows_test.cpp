// Every luma with every chroma pair, in all versions.
#include "frame/bands/to_rgb_rows.hpp"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <string>
#include <vector>

#include "support/isas.hpp"

namespace biseam::test {
namespace {

uint8_t rounded(double value) {
  const float single = static_cast<float>(value);
  const int whole = static_cast<int>(single + 0.5);
  return static_cast<uint8_t>(whole < 0 ? 0 : whole > 255 ? 255 : whole);
}

class ToRgbRows : public testing::TestWithParam<Isa> {};

// A row of all 256 lumas with one pair, for all 65536 pairs.
TEST_P(ToRgbRows, RowsOfEveryColour) {
  Yuv422RowToRgb* const one_row = kYuv422RowToRgb.of(GetParam());
  Yuv420RowsToRgb* const two_rows = kYuv420RowsToRgb.of(GetParam());
  uint8_t luma[256], chroma[256], reds[256][256], blues[256];
  for (int y = 0; y < 256; ++y) {
    luma[y] = static_cast<uint8_t>(y);
    for (int v = 0; v < 256; ++v) reds[v][y] = rounded(y + 1.402 * (v - 128));
  }
  std::vector<uint8_t> want(768), one(768), upper(768), lower(768);
  for (int u = 0; u < 256; ++u) {
    for (int y = 0; y < 256; ++y) blues[y] = rounded(y + 1.772 * (u - 128));
    for (int v = 0; v < 256; ++v) {
      const double green_u = 0.3441 * (u - 128), green_v = 0.7141 * (v - 128);
      for (int y = 0; y < 256; ++y) {
        want[size_t(3 * y)] = reds[v][y];
        want[size_t(3 * y + 1)] = rounded(y - green_u - green_v);
        want[size_t(3 * y + 2)] = blues[y];
        chroma[y] = static_cast<uint8_t>(y % 2 == 0 ? u : v);
      }
      one_row(luma, chroma, one.data(), 128);
      two_rows(luma, luma, chroma, upper.data(), lower.data(), 128);
      ASSERT_EQ(want, one) << "u " << u << " v " << v;
      ASSERT_EQ(want, upper) << "u " << u << " v " << v;
      ASSERT_EQ(want, lower) << "u " << u << " v " << v;
    }
  }
}

TEST_P(ToRgbRows, NoPairsWriteNothing) {
  uint8_t rgb[6] = {1, 2, 3, 4, 5, 6}, bytes[2] = {7, 8};
  for (const int pairs : {0, -1, INT_MIN}) {
    kYuv420RowsToRgb.of(GetParam())(bytes, bytes, bytes, rgb, rgb, pairs);
    kYuv422RowToRgb.of(GetParam())(bytes, bytes, rgb, pairs);
  }
  EXPECT_EQ(6, rgb[5]);
  EXPECT_EQ(1, rgb[0]);
}

INSTANTIATE_TEST_SUITE_P(Versions, ToRgbRows, testing::ValuesIn(isas_here()), isa_name);

}  // namespace
}  // namespace biseam::test
