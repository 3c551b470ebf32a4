#include "picture/encode.hpp"

#include <gtest/gtest.h>

#include "picture/read_picture.hpp"
#include "picture/write_picture.hpp"
#include "tool/picture/smooth_picture.hpp"
#include "tool/support/nv12_picture.hpp"
#include "tool/support/samples.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using test::ScratchFolder;
using test::smooth_picture;

Libav<AVFrame> varied(AVPixelFormat format) {
  Libav<AVFrame> frame = test::make_frame(format, 32, 16);
  frame->color_range = AVCOL_RANGE_JPEG;
  frame->chroma_location = AVCHROMA_LOC_CENTER;
  test::fill(*frame, [&](int component, int x, int y) {
    return (60u << (test::described(*frame).comp[0].depth - 8)) + unsigned(40 * component + 2 * x + 3 * y);
  });
  return frame;
}

void expect_near(const AVFrame& got, const AVFrame& expected, int tolerance) {
  for (int component = 0; component < test::described(expected).nb_components; ++component) {
    for (int y = 0; y < test::rows_of(expected, component); ++y) {
      for (int x = 0; x < test::columns_of(expected, component); ++x) {
        ASSERT_NEAR(int(test::get_sample(got, component, x, y)), int(test::get_sample(expected, component, x, y)), tolerance)
            << component << ": " << x << ", " << y;
      }
    }
  }
}

TEST(Encode, PngKeepsRgbAndGrayOfAllDepths) {
  const ScratchFolder folder;
  for (const AVPixelFormat format : {AV_PIX_FMT_GBRP, AV_PIX_FMT_GRAY8, AV_PIX_FMT_GBRP12}) {
    SCOPED_TRACE(av_get_pix_fmt_name(format));
    const Libav<AVFrame> picture = varied(format);
    write_picture(folder / "a.png", *picture);
    testing::internal::CaptureStderr();  // that 16 bits are rounded to 12
    const Libav<AVFrame> back = read_picture(folder / "a.png");
    testing::internal::GetCapturedStderr();
    ASSERT_EQ(back->format, format);
    expect_near(*back, *picture, 0);
  }
}

TEST(Encode, JpegKeepsItsChroma) {
  const ScratchFolder folder;
  for (const AVPixelFormat format : {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV422P, AV_PIX_FMT_YUV444P}) {
    SCOPED_TRACE(av_get_pix_fmt_name(format));
    const Libav<AVFrame> picture = varied(format);
    write_picture(folder / "a.jpg", *picture);
    const Libav<AVFrame> back = read_picture(folder / "a.jpg");
    ASSERT_EQ(back->format, format);
    EXPECT_EQ(back->color_range, AVCOL_RANGE_JPEG);
    EXPECT_EQ(back->chroma_location, AVCHROMA_LOC_CENTER);
    expect_near(*back, *picture, 6);
  }
  write_picture(folder / "a.jpg", *varied(AV_PIX_FMT_GBRP));
  EXPECT_EQ(read_picture(folder / "a.jpg")->format, AV_PIX_FMT_YUV444P);
}

// JPEG files can't say that they are something else.
TEST(Encode, JpegIsAlwaysFullRangeBt601) {
  const ScratchFolder folder;
  const Libav<AVFrame> picture = test::make_frame(AV_PIX_FMT_YUV420P, 32, 16);
  picture->color_range = AVCOL_RANGE_MPEG;
  picture->colorspace = AVCOL_SPC_BT709;
  test::fill(*picture, [](int component, int, int) { return component == 0 ? 63u : component == 1 ? 102u : 240u; });  // red
  write_picture(folder / "a.jpg", *picture);
  const Libav<AVFrame> back = read_picture(folder / "a.jpg");
  EXPECT_NEAR(int(test::get_sample(*back, 0, 9, 9)), 76, 2);
  EXPECT_NEAR(int(test::get_sample(*back, 1, 9, 9)), 85, 2);
  EXPECT_NEAR(int(test::get_sample(*back, 2, 9, 9)), 255, 2);
}

TEST(Encode, YuvOfTenBitsBecomesPngOfSixteen) {
  const ScratchFolder folder;
  const Libav<AVFrame> picture = test::make_frame(AV_PIX_FMT_YUV422P10, 32, 16);
  picture->color_range = AVCOL_RANGE_MPEG;
  test::fill(*picture, [](int component, int x, int) { return component == 0 ? 64u + 13 * unsigned(x) : 512u; });
  write_picture(folder / "a.png", *picture);
  testing::internal::CaptureStderr();
  const Libav<AVFrame> back = read_picture(folder / "a.png");
  testing::internal::GetCapturedStderr();
  ASSERT_EQ(back->format, AV_PIX_FMT_GBRP12);
  for (int x = 0; x < 32; ++x) {
    for (int component = 0; component < 3; ++component) {
      EXPECT_NEAR(test::get_sample(*back, component, x, 5), 13 * x * 4095 / 876.0, 1);
    }
  }
}

TEST(Encode, JpegOfBothKindsIsCloseAndFullRange) {
  const ScratchFolder folder;
  const Nv12 picture = smooth_picture(64, 48);
  write_picture(folder / "a.jpg", picture);
  write_picture(folder / "b.jpeg", to_rgb(picture));
  for (const char* name : {"a.jpg", "b.jpeg"}) {
    const Nv12 back = test::read_nv12(folder / name);
    ASSERT_EQ(back.luma.size(), picture.luma.size());
    for (std::size_t i = 0; i < back.luma.size(); ++i) ASSERT_LE(std::abs(back.luma[i] - picture.luma[i]), 6) << name << i;
    for (std::size_t i = 0; i < back.chroma.size(); ++i) ASSERT_LE(std::abs(back.chroma[i] - picture.chroma[i]), 6) << name;
  }
}

}  // namespace
}  // namespace biseam::tool
