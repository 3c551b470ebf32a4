#include "picture/split.hpp"

#include <gtest/gtest.h>

#include "tool/support/expect_failure.hpp"
#include "tool/support/samples.hpp"

namespace biseam::tool {
namespace {

std::ptrdiff_t distance(const BiseamPicture (&halves)[2], int plane) {
  return static_cast<std::uint8_t*>(halves[1].planes[plane]) - static_cast<std::uint8_t*>(halves[0].planes[plane]);
}

TEST(Split, HalvesAreViewsOfTheSamePlanes) {
  struct Case {
    AVPixelFormat format;
    int across[3], rows[3];  // bytes to the second half, and rows
  };
  const Case cases[] = {{AV_PIX_FMT_NV12, {8, 8, 0}, {4, 2, 0}},       {AV_PIX_FMT_YUV420P, {8, 4, 4}, {4, 2, 2}},
                        {AV_PIX_FMT_YUV422P10, {16, 8, 8}, {4, 4, 4}}, {AV_PIX_FMT_P010, {16, 16, 0}, {4, 2, 0}},
                        {AV_PIX_FMT_GBRP12, {16, 16, 16}, {4, 4, 4}},  {AV_PIX_FMT_YUV444P, {8, 8, 8}, {4, 4, 4}},
                        {AV_PIX_FMT_NV24, {8, 16, 0}, {4, 4, 0}},      {AV_PIX_FMT_GRAY8, {8, 0, 0}, {4, 0, 0}}};
  for (const Case& c : cases) {
    SCOPED_TRACE(av_get_pix_fmt_name(c.format));
    const Libav<AVFrame> picture = test::make_frame(c.format, 16, 8);
    BiseamPicture halves[2];
    split(*picture, Layout::side_by_side, "in.png", halves);
    for (const BiseamPicture& half : halves) {
      EXPECT_EQ(half.width, 8);
      EXPECT_EQ(half.height, 8);
    }
    EXPECT_EQ(halves[0].planes[0], picture->data[0]);
    for (int plane = 0; plane < 3; ++plane) EXPECT_EQ(distance(halves, plane), c.across[plane]) << plane;
    split(*picture, Layout::top_bottom, "in.png", halves);
    for (const BiseamPicture& half : halves) {
      EXPECT_EQ(half.width, 16);
      EXPECT_EQ(half.height, 4);
    }
    for (int plane = 0; plane < 3; ++plane) {
      EXPECT_EQ(distance(halves, plane), c.rows[plane] * halves[0].strides[plane]) << plane;
    }
  }
}

TEST(Split, TheShapeTellsTheLayoutUnlessItIsGiven) {
  const Libav<AVFrame> wide = test::make_frame(AV_PIX_FMT_NV12, 16, 8), high = test::make_frame(AV_PIX_FMT_NV12, 8, 16);
  BiseamPicture halves[2];
  split(*wide, Layout::automatic, "in.png", halves);
  EXPECT_EQ(halves[1].width, 8);
  split(*high, Layout::automatic, "in.png", halves);
  EXPECT_EQ(halves[1].height, 8);
  split(*high, Layout::side_by_side, "in.png", halves);
  EXPECT_EQ(halves[1].width, 4);
  EXPECT_EQ(halves[1].height, 16);
}

TEST(Split, HalvesOfOddSidesAreRefused) {
  const Libav<AVFrame> picture = test::make_frame(AV_PIX_FMT_NV12, 18, 10);
  BiseamPicture halves[2];
  const auto [code, across] = test::failure_of([&] { split(*picture, Layout::side_by_side, "in.png", halves); });
  EXPECT_EQ(code, ExitCode::input);
  EXPECT_EQ(across, "in.png: two circles side by side need a width divisible by 4, it is 18");
  EXPECT_EQ(test::failure_of([&] { split(*picture, Layout::top_bottom, "in.png", halves); }).second,
            "in.png: two circles one above the other need a height divisible by 4, it is 10");
}

}  // namespace
}  // namespace biseam::tool
