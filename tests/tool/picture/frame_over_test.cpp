#include "picture/frame_over.hpp"

#include <gtest/gtest.h>

#include <numeric>

#include "tool/support/samples.hpp"

namespace biseam::tool {
namespace {

using namespace test;

TEST(FrameOver, SeesThePlanesOfNv12) {
  Nv12 picture(6, 4);
  std::iota(picture.luma.begin(), picture.luma.end(), std::uint8_t(0));
  std::iota(picture.chroma.begin(), picture.chroma.end(), std::uint8_t(100));
  const Libav<AVFrame> frame = frame_over(picture);
  EXPECT_EQ(frame->data[0], picture.luma.data());
  EXPECT_EQ(frame->data[1], picture.chroma.data());
  EXPECT_EQ(frame->color_range, AVCOL_RANGE_JPEG);
  EXPECT_EQ(frame->chroma_location, AVCHROMA_LOC_CENTER);
  EXPECT_EQ(get_sample(*frame, 0, 5, 3), 3u * 6 + 5);
  EXPECT_EQ(get_sample(*frame, 1, 2, 1), 100u + 6 + 4);
  EXPECT_EQ(get_sample(*frame, 2, 2, 1), 100u + 6 + 5);
}

TEST(FrameOver, SeesThePixelsOfRgbAndOpacity) {
  Rgb rgb(5, 3);
  std::iota(rgb.bytes.begin(), rgb.bytes.end(), std::uint8_t(0));
  Rgba rgba(5, 3);
  std::iota(rgba.bytes.begin(), rgba.bytes.end(), std::uint8_t(0));
  const Libav<AVFrame> three = frame_over(rgb), four = frame_over(rgba);
  EXPECT_EQ(three->data[0], rgb.bytes.data());
  EXPECT_EQ(four->data[0], rgba.bytes.data());
  for (int k = 0; k < 3; ++k) EXPECT_EQ(get_sample(*three, k, 4, 2), 3u * 14 + unsigned(k));
  for (int k = 0; k < 4; ++k) EXPECT_EQ(get_sample(*four, k, 4, 2), 4u * 14 + unsigned(k));
}

TEST(RgbOf, IsACopyOfWhatIsRgbAlready) {
  Rgb rgb(5, 3);
  std::iota(rgb.bytes.begin(), rgb.bytes.end(), std::uint8_t(0));
  const Rgb copy = rgb_of(*frame_over(rgb));
  EXPECT_EQ(copy.width, 5);
  EXPECT_EQ(copy.height, 3);
  EXPECT_EQ(copy.bytes, rgb.bytes);
}

// Red of BT.709 with limited range, which other matrices and ranges show otherwise.
TEST(RgbOf, FollowsMatrixAndRange) {
  const Libav<AVFrame> picture = make_frame(AV_PIX_FMT_YUV444P, 4, 4);
  fill(*picture, [](int component, int, int) { return component == 0 ? 63u : component == 1 ? 102u : 240u; });
  picture->colorspace = AVCOL_SPC_BT709;
  picture->color_range = AVCOL_RANGE_MPEG;
  const Rgb red = rgb_of(*picture);
  EXPECT_NEAR(red.bytes[0], 255, 1);
  EXPECT_NEAR(red.bytes[1], 0, 1);
  EXPECT_NEAR(red.bytes[2], 0, 1);
}

}  // namespace
}  // namespace biseam::tool
