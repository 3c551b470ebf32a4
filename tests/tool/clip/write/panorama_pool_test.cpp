#include "clip/write/panorama_pool.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <stdexcept>

#include "tool/support/samples.hpp"

namespace biseam::tool {
namespace {

TEST(PanoramaPool, FramesHaveTheSizeTheFormatAndTheTags) {
  PanoramaPool pool({36, 18}, AV_PIX_FMT_YUV422P10LE,
                    {AVCOL_RANGE_MPEG, AVCOL_SPC_BT709, AVCOL_PRI_BT2020, AVCOL_TRC_ARIB_STD_B67, AVCHROMA_LOC_LEFT});
  const Libav<AVFrame> frame = pool.frame();
  EXPECT_EQ(frame->width, 36);
  EXPECT_EQ(frame->height, 18);
  EXPECT_EQ(frame->format, AV_PIX_FMT_YUV422P10LE);
  EXPECT_EQ(frame->color_range, AVCOL_RANGE_MPEG);
  EXPECT_EQ(frame->colorspace, AVCOL_SPC_BT709);
  EXPECT_EQ(frame->color_primaries, AVCOL_PRI_BT2020);
  EXPECT_EQ(frame->color_trc, AVCOL_TRC_ARIB_STD_B67);
  EXPECT_EQ(frame->chroma_location, AVCHROMA_LOC_LEFT);
  EXPECT_EQ(frame->linesize[0], pool.stride());
}

// Planes that were written one after the other hold what they were given, and the memory behind them all is the frame's.
TEST(PanoramaPool, PlanesLieApartInRowsOf64Bytes) {
  for (const AVPixelFormat format : {AV_PIX_FMT_NV12, AV_PIX_FMT_YUV420P, AV_PIX_FMT_GRAY8, AV_PIX_FMT_GBRP12LE}) {
    SCOPED_TRACE(av_get_pix_fmt_name(format));
    PanoramaPool pool({38, 10}, format);
    const Libav<AVFrame> frame = pool.frame();
    std::memset(frame->buf[0]->data, 0, frame->buf[0]->size);
    for (int k = 0; k < 4 && frame->data[k]; ++k) {
      EXPECT_EQ(frame->linesize[k] % 64, 0) << k;
      EXPECT_GE(frame->data[k], frame->buf[0]->data);
    }
    test::fill(*frame, [](int component, int x, int y) { return unsigned(7 * component + 5 * x + y) & 255; });
    for (int component = 0; component < test::described(*frame).nb_components; ++component) {
      for (int y = 0; y < test::rows_of(*frame, component); ++y) {
        for (int x = 0; x < test::columns_of(*frame, component); ++x) {
          ASSERT_EQ(test::get_sample(*frame, component, x, y), unsigned(7 * component + 5 * x + y) & 255);
        }
      }
    }
  }
}

TEST(PanoramaPool, MemoryComesBackWhenNobodyUsesItAnyMore) {
  PanoramaPool pool({64, 32});
  Libav<AVFrame> first = pool.frame();
  const Libav<AVFrame> second = pool.frame();
  const std::uint8_t* const memory = first->data[0];
  EXPECT_NE(memory, second->data[0]);
  const Libav<AVFrame> user(av_frame_clone(first.get()));
  first.reset();
  EXPECT_NE(pool.frame()->data[0], memory);
  av_frame_unref(user.get());
  EXPECT_EQ(pool.frame()->data[0], memory);
}

TEST(PanoramaPool, FramesMayOutliveIt) {
  Libav<AVFrame> frame;
  {
    PanoramaPool pool({64, 32});
    frame = pool.frame();
  }
  std::memset(frame->data[0], 1, std::size_t(frame->linesize[0]) * 32);
  EXPECT_EQ(frame->data[0][31 * frame->linesize[0] + 63], 1);
}

TEST(PanoramaPool, SizesBeyondAllMeasureAreRefused) {
  EXPECT_THROW(PanoramaPool({1 << 30, 1 << 30}, AV_PIX_FMT_GBRP12LE), std::runtime_error);
}

}  // namespace
}  // namespace biseam::tool
