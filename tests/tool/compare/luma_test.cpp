#include "compare/luma.hpp"

#include <gtest/gtest.h>

#include "tool/support/samples.hpp"

namespace biseam::tool {
namespace {

float luma(AVPixelFormat format, std::initializer_list<unsigned> values, AVColorRange range, AVColorSpace matrix) {
  const Libav<AVFrame> frame = test::make_frame(format, 16, 12);
  frame->color_range = range;
  frame->colorspace = matrix;
  test::fill(*frame, [&](int component, int, int) { return values.begin()[component]; });
  const Luma got = luma_of(*frame);
  EXPECT_EQ(got.size, (Size{16, 12}));
  EXPECT_EQ(got.codes.size(), 16u * 12);
  return got.codes[40];
}

TEST(Luma, OfAllDepthsAndFormatsIsOnOneScale) {
  constexpr AVColorSpace kNone = AVCOL_SPC_UNSPECIFIED;
  EXPECT_EQ(luma(AV_PIX_FMT_YUV420P, {90, 1, 2}, AVCOL_RANGE_JPEG, kNone), 90);
  EXPECT_EQ(luma(AV_PIX_FMT_GRAY8, {90}, AVCOL_RANGE_JPEG, kNone), 90);
  EXPECT_FLOAT_EQ(luma(AV_PIX_FMT_YUV420P10, {361, 1, 2}, AVCOL_RANGE_JPEG, kNone), 361 * 255.0F / 1023);
  EXPECT_FLOAT_EQ(luma(AV_PIX_FMT_GBRP, {10, 20, 30}, AVCOL_RANGE_JPEG, AVCOL_SPC_RGB), 2.99F + 11.74F + 3.42F);
  EXPECT_FLOAT_EQ(luma(AV_PIX_FMT_GBRP12, {4095, 4095, 4095}, AVCOL_RANGE_JPEG, AVCOL_SPC_RGB), 255);
}

TEST(Luma, OfOtherRangesAndMatricesIsThatOfTheirRgb) {
  EXPECT_NEAR(luma(AV_PIX_FMT_YUV420P, {126, 128, 128}, AVCOL_RANGE_MPEG, AVCOL_SPC_UNSPECIFIED), 110 * 255.0 / 219, 0.6);
  EXPECT_NEAR(luma(AV_PIX_FMT_YUV444P10, {504, 512, 512}, AVCOL_RANGE_MPEG, AVCOL_SPC_BT709), 440 * 255.0 / 876, 0.04);
}

}  // namespace
}  // namespace biseam::tool
