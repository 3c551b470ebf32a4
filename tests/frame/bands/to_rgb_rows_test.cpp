// Every luma with every chroma pair, in all versions.
#include "frame/bands/to_rgb_rows.hpp"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstring>
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

// Red, green and blue of all 256 lumas, for one pair.
std::vector<uint8_t> colours_of_pair(int u, int v) {
  const double red = 1.402 * (v - 128), green_u = 0.3441 * (u - 128), green_v = 0.7141 * (v - 128), blue = 1.772 * (u - 128);
  std::vector<uint8_t> rgb;
  for (int y = 0; y < 256; ++y) {
    rgb.insert(rgb.end(), {rounded(y + red), rounded(y - green_u - green_v), rounded(y + blue)});
  }
  return rgb;
}

class ToRgbRows : public testing::TestWithParam<Isa> {
 protected:
  void SetUp() override {
    for (int y = 0; y < 256; ++y) luma_[y] = static_cast<uint8_t>(y);
  }

  // Compares a row of 256 pixels, all with one pair, for all 65536 pairs.
  template <class Convert>
  void check(Convert convert) {
    std::vector<uint8_t> rgb(768);
    uint8_t chroma[256];
    for (int u = 0; u < 256; ++u) {
      for (int v = 0; v < 256; ++v) {
        for (int i = 0; i < 256; ++i) chroma[i] = static_cast<uint8_t>(i % 2 == 0 ? u : v);
        const std::vector<uint8_t> want = colours_of_pair(u, v);
        convert(luma_, chroma, rgb.data());
        ASSERT_EQ(want, rgb) << "u " << u << " v " << v;
      }
    }
  }

  uint8_t luma_[256];
};

TEST_P(ToRgbRows, OneRowOfEveryColour) {
  Yuv422RowToRgb* const convert = kYuv422RowToRgb.of(GetParam());
  check([&](const uint8_t* luma, const uint8_t* chroma, uint8_t* rgb) { convert(luma, chroma, rgb, 128); });
}

TEST_P(ToRgbRows, TwoRowsOfEveryColour) {
  Yuv420RowsToRgb* const convert = kYuv420RowsToRgb.of(GetParam());
  std::vector<uint8_t> upper(768);
  check([&](const uint8_t* luma, const uint8_t* chroma, uint8_t* rgb) {
    convert(luma, luma, chroma, upper.data(), rgb, 128);
    ASSERT_EQ(0, std::memcmp(upper.data(), rgb, 768));
  });
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
