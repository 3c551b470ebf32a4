#include "media/deep_rgb.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>

#include "tool/support/samples.hpp"

namespace biseam::tool {
namespace {

using namespace test;

// One pixel.
std::array<unsigned, 3> rgb_of(std::array<unsigned, 3> yuv, AVPixelFormat from, AVColorSpace matrix, bool is_full,
                               AVPixelFormat to = AV_PIX_FMT_GBRP12LE) {
  const Libav<AVFrame> frame = make_frame(from, 1, 1), rgb = make_frame(to, 1, 1);
  frame->colorspace = matrix;
  for (int k = 0; k < 3; ++k) set_sample(*frame, k, 0, 0, yuv[std::size_t(k)]);
  fill_deep_rgb(*frame, is_full, *rgb);
  return {get_sample(*rgb, 0, 0, 0), get_sample(*rgb, 1, 0, 0), get_sample(*rgb, 2, 0, 0)};
}

using Pixel = std::array<unsigned, 3>;

// No other value is nearer to (Y - 64) * 4095 / 876, held within the range.
TEST(DeepRgb, EveryGrayOfTenBitsIsTheNearestOfTwelve) {
  const Libav<AVFrame> grays = make_frame(AV_PIX_FMT_YUV444P10LE, 1024, 1), rgb = make_frame(AV_PIX_FMT_GBRP12LE, 1024, 1);
  fill(*grays, [](int component, int x, int) { return component == 0 ? unsigned(x) : 512u; });
  fill_deep_rgb(*grays, false, *rgb);
  for (int x = 0; x < 1024; ++x) {
    const int exact = std::clamp((x - 64) * 4095, 0, 876 * 4095);  // in 1/876
    for (int k = 0; k < 3; ++k) ASSERT_LE(2 * std::abs(int(get_sample(*rgb, k, x, 0)) * 876 - exact), 876) << x;
  }
}

TEST(DeepRgb, GraysOfFullRangeReachBothEnds) {
  EXPECT_EQ(rgb_of({0, 2048, 2048}, AV_PIX_FMT_YUV444P12LE, AVCOL_SPC_BT709, true), (Pixel{0, 0, 0}));
  EXPECT_EQ(rgb_of({1234, 2048, 2048}, AV_PIX_FMT_YUV444P12LE, AVCOL_SPC_BT709, true), (Pixel{1234, 1234, 1234}));
  EXPECT_EQ(rgb_of({4095, 2048, 2048}, AV_PIX_FMT_YUV444P12LE, AVCOL_SPC_BT709, true), (Pixel{4095, 4095, 4095}));
}

// With the published factors: red = Y + 1.402 Cr and so on, of 1023 steps each.
TEST(DeepRgb, EveryMatrixHasItsFactors) {
  constexpr Pixel kRed{306, 339, 1023};
  const auto shown = [&](AVColorSpace matrix) { return rgb_of(kRed, AV_PIX_FMT_YUV444P10LE, matrix, true); };
  EXPECT_EQ(shown(AVCOL_SPC_BT470BG), (Pixel{4093, 2, 0}));       // 306 - 0.344136 * -173 - 0.714136 * 511 = 0.61
  EXPECT_EQ(shown(AVCOL_SPC_UNSPECIFIED), (Pixel{4093, 2, 0}));   // as BT.601
  EXPECT_EQ(shown(AVCOL_SPC_BT709), (Pixel{4095, 397, 0}));       // 306 - 0.187324 * -173 - 0.468124 * 511 = 99.20
  EXPECT_EQ(shown(AVCOL_SPC_BT2020_NCL), (Pixel{4095, 170, 0}));  // 306 - 0.164553 * -173 - 0.571353 * 511 = 42.51
}

// White and black of 8 bits times 4, and the ends of 16 bits.
TEST(DeepRgb, LimitedRangeAndSixteenBits) {
  EXPECT_EQ(rgb_of({940, 512, 512}, AV_PIX_FMT_YUV444P10LE, AVCOL_SPC_BT709, false, AV_PIX_FMT_GBRP16LE),
            (Pixel{65535, 65535, 65535}));
  EXPECT_EQ(rgb_of({64, 512, 512}, AV_PIX_FMT_YUV444P10LE, AVCOL_SPC_BT709, false, AV_PIX_FMT_GBRP16LE), (Pixel{0, 0, 0}));
  // Cr of a whole 224 steps: 1.5748 / 2 of the range above gray.
  EXPECT_EQ(rgb_of({64, 512, 960}, AV_PIX_FMT_YUV444P10LE, AVCOL_SPC_BT709, false)[0], 3224u);  // 0.7874 * 4095
}

}  // namespace
}  // namespace biseam::tool
