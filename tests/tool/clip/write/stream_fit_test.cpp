#include "clip/write/stream_fit.hpp"

#include <gtest/gtest.h>

#include <string>

namespace biseam::tool {
namespace {

class StreamFit : public testing::Test {
 protected:
  AVStream& stream(AVMediaType type, AVCodecID codec, unsigned tag = 0) {
    AVStream& made = *avformat_new_stream(clip_, nullptr);
    made.codecpar->codec_type = type;
    made.codecpar->codec_id = codec;
    made.codecpar->codec_tag = tag;
    made.time_base = {1, 1000};
    return made;
  }

  AVStream& sound(AVCodecID codec) {
    AVStream& made = stream(AVMEDIA_TYPE_AUDIO, codec);
    made.codecpar->sample_rate = 48000;
    made.codecpar->format = AV_SAMPLE_FMT_S16;
    made.codecpar->block_align = 4;
    made.codecpar->bits_per_coded_sample = 16;
    av_channel_layout_default(&made.codecpar->ch_layout, 2);
    return made;
  }

  static const AVOutputFormat& format(const char* name) { return *av_guess_format(name, nullptr, nullptr); }

  ~StreamFit() override { avformat_free_context(clip_); }

  AVFormatContext* clip_ = avformat_alloc_context();
};

TEST_F(StreamFit, TextsNameStreamsByNumberKindAndCodec) {
  EXPECT_EQ(stream_text(stream(AVMEDIA_TYPE_VIDEO, AV_CODEC_ID_H264), ""), "stream 0 (video, h264)");
  EXPECT_EQ(stream_text(stream(AVMEDIA_TYPE_SUBTITLE, AV_CODEC_ID_SUBRIP), "a.mkv"), "a.mkv: stream 1 (subtitle, subrip)");
  const unsigned motion = MKTAG('g', 'p', 'm', 'd');
  EXPECT_EQ(stream_text(stream(AVMEDIA_TYPE_DATA, AV_CODEC_ID_BIN_DATA, motion), ""), "stream 2 (data, gpmd)");
  EXPECT_EQ(stream_text(stream(AVMEDIA_TYPE_DATA, AV_CODEC_ID_NONE), ""), "stream 3 (data, none)");
  EXPECT_EQ(stream_text(stream(AVMEDIA_TYPE_UNKNOWN, AV_CODEC_ID_NONE), ""), "stream 4 (unknown, none)");
  AVStream& font = stream(AVMEDIA_TYPE_ATTACHMENT, AV_CODEC_ID_TTF);
  av_dict_set(&font.metadata, "filename", "a.ttf", 0);
  EXPECT_EQ(stream_text(font, ""), "stream 5 (attachment, a.ttf)");
}

TEST_F(StreamFit, TimeCodeIsCarriedOnlyWhereTheMetadataHasIt) {
  AVStream& code = stream(AVMEDIA_TYPE_DATA, AV_CODEC_ID_NONE, MKTAG('t', 'm', 'c', 'd'));
  EXPECT_FALSE(is_carried_by_metadata(*clip_, code));
  av_dict_set(&code.metadata, "timecode", "01:00:00:00", 0);
  EXPECT_TRUE(is_carried_by_metadata(*clip_, code));
  code.codecpar->codec_type = AVMEDIA_TYPE_VIDEO;
  EXPECT_FALSE(is_carried_by_metadata(*clip_, code));
}

TEST_F(StreamFit, EveryContainerHasItsOwnSounds) {
  const AVStream &pcm = sound(AV_CODEC_ID_PCM_S16LE), &flac = sound(AV_CODEC_ID_FLAC);
  EXPECT_EQ(holding_trouble(format("mov"), pcm), "");
  EXPECT_EQ(holding_trouble(format("matroska"), pcm), "");
  EXPECT_NE(holding_trouble(format("mp4"), pcm), "");
  EXPECT_NE(holding_trouble(format("mov"), flac), "");
}

TEST_F(StreamFit, DataAndCoversThatWouldBeLostAreNamed) {
  const AVStream& other = stream(AVMEDIA_TYPE_DATA, AV_CODEC_ID_BIN_DATA, MKTAG('x', 'y', 'z', 'w'));
  const AVStream& motion = stream(AVMEDIA_TYPE_DATA, AV_CODEC_ID_BIN_DATA, MKTAG('g', 'p', 'm', 'd'));
  for (const char* name : {"mp4", "mov"}) {
    EXPECT_EQ(holding_trouble(format(name), other), "data of an unknown kind");
    EXPECT_EQ(holding_trouble(format(name), motion), "");
  }
  AVStream& cover = stream(AVMEDIA_TYPE_VIDEO, AV_CODEC_ID_PNG);
  cover.codecpar->width = cover.codecpar->height = 8;
  cover.disposition = AV_DISPOSITION_ATTACHED_PIC;
  EXPECT_EQ(holding_trouble(format("mov"), cover), "a cover picture");
  EXPECT_EQ(holding_trouble(format("mp4"), cover), "");
}

TEST_F(StreamFit, TagsThatAContainerDoesNotKnowAreLeftToIt) {
  AVStream& from = stream(AVMEDIA_TYPE_VIDEO, AV_CODEC_ID_H264, MKTAG('a', 'v', 'c', '1'));
  AVStream& to = stream(AVMEDIA_TYPE_VIDEO, AV_CODEC_ID_NONE);
  from.codecpar->width = 77;
  copy_parameters(format("mp4"), from, to);
  EXPECT_EQ(to.codecpar->codec_tag, MKTAG('a', 'v', 'c', '1'));
  EXPECT_EQ(to.codecpar->width, 77);
  from.codecpar->codec_tag = MKTAG('H', '2', '6', '4');
  copy_parameters(format("mp4"), from, to);
  EXPECT_EQ(to.codecpar->codec_tag, 0u);
}

TEST_F(StreamFit, WhatNobodyCouldReadIsNamed) {
  AVCodecParameters& encoded = *stream(AVMEDIA_TYPE_VIDEO, AV_CODEC_ID_A64_MULTI).codecpar;
  EXPECT_EQ(encoded_trouble(format("mov"), encoded), "there is no decoder for it");
  encoded.codec_id = AV_CODEC_ID_QTRLE;
  EXPECT_EQ(encoded_trouble(format("matroska"), encoded), "there is no place for its depth");
  EXPECT_EQ(encoded_trouble(format("mov"), encoded), "");
  encoded.codec_id = AV_CODEC_ID_RAWVIDEO;
  encoded.format = AV_PIX_FMT_YUV444P;
  EXPECT_EQ(encoded_trouble(format("mov"), encoded), "there is no name for its kind of samples");
  EXPECT_EQ(encoded_trouble(format("matroska"), encoded), "");
  encoded.format = AV_PIX_FMT_YUV420P;
  EXPECT_EQ(encoded_trouble(format("mov"), encoded), "");
}

TEST_F(StreamFit, HevcGetsTheTagThatPlayersKnowInTheirContainers) {
  for (const auto& [name, codec, tag] : {std::tuple{"mp4", AV_CODEC_ID_HEVC, MKTAG('h', 'v', 'c', '1')},
                                         {"mov", AV_CODEC_ID_HEVC, MKTAG('h', 'v', 'c', '1')},
                                         {"matroska", AV_CODEC_ID_HEVC, 5},
                                         {"mp4", AV_CODEC_ID_H264, 5}}) {
    AVStream& encoded = stream(AVMEDIA_TYPE_VIDEO, codec, 5);
    tag_for_players(format(name), *encoded.codecpar);
    EXPECT_EQ(encoded.codecpar->codec_tag, unsigned(tag)) << name;
  }
}

}  // namespace
}  // namespace biseam::tool
