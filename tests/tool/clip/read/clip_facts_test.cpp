#include "clip/read/clip_facts.hpp"

#include <gtest/gtest.h>

#include <memory>

namespace biseam::tool {
namespace {

struct FormatDelete {
  void operator()(AVFormatContext* format) const { avformat_free_context(format); }
};

class ClipColour : public testing::Test {
 protected:
  ClipColour() : format_(avformat_alloc_context()), stream_(avformat_new_stream(format_.get(), nullptr)) {
    frame_.reset(av_frame_alloc());
    frame_->format = AV_PIX_FMT_YUV420P;
    AVCodecParameters& told = *stream_->codecpar;
    told.color_range = AVCOL_RANGE_MPEG;
    told.color_space = AVCOL_SPC_BT709;
    told.color_primaries = AVCOL_PRI_BT709;
    told.color_trc = AVCOL_TRC_BT709;
    told.chroma_location = AVCHROMA_LOC_LEFT;
  }

  std::unique_ptr<AVFormatContext, FormatDelete> format_;
  AVStream* stream_;
  Libav<AVFrame> frame_;
};

TEST_F(ClipColour, IsThePicturesAndElseTheStreams) {
  const Colour streams = colour_of(*frame_, *stream_);
  EXPECT_EQ(streams.range, AVCOL_RANGE_MPEG);
  EXPECT_EQ(streams.matrix, AVCOL_SPC_BT709);
  EXPECT_EQ(streams.primaries, AVCOL_PRI_BT709);
  EXPECT_EQ(streams.transfer, AVCOL_TRC_BT709);
  EXPECT_EQ(streams.siting, AVCHROMA_LOC_LEFT);
  set_colour(*frame_, {AVCOL_RANGE_JPEG, AVCOL_SPC_BT2020_NCL, AVCOL_PRI_BT2020, AVCOL_TRC_ARIB_STD_B67, AVCHROMA_LOC_TOPLEFT});
  const Colour pictures = colour_of(*frame_, *stream_);
  EXPECT_EQ(pictures.range, AVCOL_RANGE_JPEG);
  EXPECT_EQ(pictures.matrix, AVCOL_SPC_BT2020_NCL);
  EXPECT_EQ(pictures.primaries, AVCOL_PRI_BT2020);
  EXPECT_EQ(pictures.transfer, AVCOL_TRC_ARIB_STD_B67);
  EXPECT_EQ(pictures.siting, AVCHROMA_LOC_TOPLEFT);
}

TEST_F(ClipColour, FormatsOfFullRangeSayItThemselves) {
  frame_->format = AV_PIX_FMT_YUVJ420P;
  EXPECT_EQ(colour_of(*frame_, *stream_).range, AVCOL_RANGE_JPEG);
  EXPECT_EQ(colour_of(*frame_, *stream_).matrix, AVCOL_SPC_BT709);
}

// Whatever the tags say.
TEST_F(ClipColour, RgbHasFullRangeAndNoMatrix) {
  for (const AVPixelFormat format : {AV_PIX_FMT_RGB24, AV_PIX_FMT_GBRP12LE, AV_PIX_FMT_PAL8}) {
    frame_->format = format;
    EXPECT_EQ(colour_of(*frame_, *stream_).range, AVCOL_RANGE_JPEG);
    EXPECT_EQ(colour_of(*frame_, *stream_).matrix, AVCOL_SPC_RGB);
    EXPECT_EQ(colour_of(*frame_, *stream_).primaries, AVCOL_PRI_BT709);
  }
}

// They are refused later, by name.
TEST_F(ClipColour, FormatsThatCantBeUsedKeepTheirTags) {
  frame_->format = AV_PIX_FMT_VAAPI;
  EXPECT_EQ(colour_of(*frame_, *stream_).range, AVCOL_RANGE_MPEG);
}

}  // namespace
}  // namespace biseam::tool
