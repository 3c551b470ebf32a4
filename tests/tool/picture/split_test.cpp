#include "picture/split.hpp"

#include <gtest/gtest.h>

#include "base/size.hpp"
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

TEST(Split, ANearlySquarePictureShowsOneLensUnlessTheLayoutIsGiven) {
  BiseamPicture halves[2];
  for (const Size size : {Size{16, 16}, Size{20, 16}, Size{16, 20}}) {
    const Libav<AVFrame> picture = test::make_frame(AV_PIX_FMT_GRAY8, size.width, size.height);
    EXPECT_FALSE(has_both_circles(*picture));
    const auto [code, line] = test::failure_of([&] { split(*picture, Layout::automatic, "in.png", halves); });
    EXPECT_EQ(code, ExitCode::input);
    EXPECT_EQ(line, "in.png: " + size_text(size) +
                        " pixels show one lens; the other's file is missing, or --layout says where both are");
    split(*picture, Layout::side_by_side, "in.png", halves);
    EXPECT_EQ(halves[1].width, size.width / 2);
  }
  EXPECT_TRUE(has_both_circles(*test::make_frame(AV_PIX_FMT_GRAY8, 24, 16)));
}

TEST(Split, HalvesThatArentWholeAreRefused) {
  struct Case {
    AVPixelFormat format;
    int across, down;  // what the sides have to be divisible by
  };
  for (const Case& c : {Case{AV_PIX_FMT_NV12, 4, 4}, Case{AV_PIX_FMT_YUV420P12, 4, 4}, Case{AV_PIX_FMT_YUV422P, 4, 2},
                        Case{AV_PIX_FMT_YUV444P, 2, 2}, Case{AV_PIX_FMT_GBRP12, 2, 2}, Case{AV_PIX_FMT_GRAY8, 2, 2}}) {
    SCOPED_TRACE(av_get_pix_fmt_name(c.format));
    for (int side = 8; side < 16; ++side) {
      const Libav<AVFrame> picture = test::make_frame(c.format, side, side);
      BiseamPicture halves[2];
      const auto expect_rule = [&](Layout layout, int step, const std::string& text) {
        if (side % step == 0) return split(*picture, layout, "in.png", halves);
        const auto [code, line] = test::failure_of([&] { split(*picture, layout, "in.png", halves); });
        EXPECT_EQ(code, ExitCode::input);
        EXPECT_EQ(line,
                  "in.png: two circles " + text + " divisible by " + std::to_string(step) + ", it is " + std::to_string(side));
      };
      expect_rule(Layout::side_by_side, c.across, "side by side need a width");
      expect_rule(Layout::top_bottom, c.down, "one above the other need a height");
    }
  }
}

}  // namespace
}  // namespace biseam::tool
