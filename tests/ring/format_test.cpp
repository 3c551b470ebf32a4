#include "ring/format.hpp"

#include <gtest/gtest.h>

#include <string_view>

#include "support/own_picture.hpp"

namespace biseam::test {
namespace {

using ring::describe_format;
using ring::PictureFormat;

class Formats : public testing::TestWithParam<TestFormat> {};

TEST_P(Formats, AreDescribedAsTheyAre) {
  const TestFormat& format = GetParam();
  for (const int siting : {BISEAM_SITING_LEFT, BISEAM_SITING_MIDDLE, BISEAM_SITING_TOP_LEFT}) {
    PictureFormat described;
    ASSERT_TRUE(describe_format(format.code, siting, described));
    EXPECT_EQ(described.planes, format.planes());
    EXPECT_EQ(described.bits, format.bits);
    EXPECT_EQ(described.shift, format.shift);
    EXPECT_EQ(described.rgb, std::string_view(format.name).substr(0, 3) == "gbr");
    const ring::PlaneFormat& luma = described.plane[0];
    EXPECT_EQ(luma.type, format.bits == 8 ? ring::SampleType::bytes : ring::SampleType::words);
    EXPECT_EQ(luma.channels[0], 0);
    EXPECT_EQ(luma.grid.bits_x + luma.grid.bits_y + luma.grid.half_x + luma.grid.half_y, 0);
    for (int plane = 1; plane < described.planes; ++plane) {
      const ring::PlaneFormat& chroma = described.plane[plane];
      EXPECT_EQ(ring::is_pairs(chroma.type), format.paired());
      EXPECT_EQ(ring::is_words(chroma.type), format.bits > 8);
      EXPECT_EQ(1 << chroma.grid.bits_x, format.sub_x);
      EXPECT_EQ(1 << chroma.grid.bits_y, format.sub_y);
      EXPECT_EQ(chroma.grid.half_x, format.sub_x == 2 && siting == BISEAM_SITING_MIDDLE);
      EXPECT_EQ(chroma.grid.half_y, format.sub_y == 2 && siting != BISEAM_SITING_TOP_LEFT);
      const int first = format.layout == TestFormat::swapped_pairs ? 2 : format.paired() ? 1 : plane;
      EXPECT_EQ(chroma.channels[0], first);
      EXPECT_EQ(chroma.channels[1], format.paired() ? 3 - first : first);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(All, Formats, testing::ValuesIn(kTestFormats), format_name);

TEST(Formats, OthersAreNone) {
  PictureFormat described;
  for (const int code : {-1, 0, 21, 1 << 30}) EXPECT_FALSE(describe_format(code, BISEAM_SITING_LEFT, described)) << code;
  for (const int siting : {-1, 3}) EXPECT_FALSE(describe_format(BISEAM_GRAY8, siting, described)) << siting;
}

TEST(Formats, PlanesOfOddSizesHaveALastRowAndColumn) {
  EXPECT_EQ(ring::plane_size(7, 0), 7);
  EXPECT_EQ(ring::plane_size(7, 1), 4);
  EXPECT_EQ(ring::plane_size(8, 1), 4);
  EXPECT_EQ(ring::plane_size(1, 1), 1);
}

}  // namespace
}  // namespace biseam::test
