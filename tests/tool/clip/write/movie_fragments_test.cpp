#include "clip/write/movie_fragments.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace biseam::tool {
namespace {

class Fragments : public testing::Test {
 protected:
  Fragments() {
    AVFormatContext* like = nullptr;
    EXPECT_GE(avformat_alloc_output_context2(&like, av_guess_format("mp4", nullptr, nullptr), nullptr, nullptr), 0);
    like_.reset(like);
    av_dict_set(&like->metadata, "title", "A walk", 0);
    AVStream& stream = *avformat_new_stream(like, nullptr);
    stream.time_base = {1, 1000};
    stream.codecpar->codec_type = AVMEDIA_TYPE_VIDEO;
    stream.codecpar->codec_id = AV_CODEC_ID_MJPEG;
    stream.codecpar->width = 64;
    stream.codecpar->height = 32;
  }

  static void put(MovieFragments& fragments, const std::string& bytes, std::int64_t time, int stream = 0) {
    const Libav<AVPacket> packet(av_packet_alloc());
    ASSERT_EQ(av_new_packet(packet.get(), int(bytes.size())), 0);
    std::memcpy(packet->data, bytes.data(), bytes.size());
    packet->pts = packet->dts = time;
    packet->duration = 40;
    packet->flags |= AV_PKT_FLAG_KEY;
    packet->stream_index = stream;
    ASSERT_GE(fragments.put(*packet), 0);
    EXPECT_EQ(packet->size, int(bytes.size())) << "packets stay the caller's";
  }

  static std::string names(const Bytes& boxes) {
    std::string all;
    std::size_t at = 0;
    while (const std::optional<Box> box = box_at(boxes, at, boxes.size())) {
      all += std::string(boxes.begin() + std::ptrdiff_t(at) + 4, boxes.begin() + std::ptrdiff_t(at) + 8) + " ";
      at = box->end();
    }
    EXPECT_EQ(at, boxes.size());
    return all;
  }

  static std::string media(const Bytes& boxes) {
    const std::optional<Box> box = find_box(boxes, 0, boxes.size(), "mdat");
    if (!box) return "";
    return {boxes.begin() + std::ptrdiff_t(box->at + kBoxHeader), boxes.begin() + std::ptrdiff_t(box->end())};
  }

  static bool holds(const Bytes& boxes, const std::string& text) {
    return std::string(boxes.begin(), boxes.end()).find(text) != std::string::npos;
  }

  std::unique_ptr<AVFormatContext, MuxerDelete> like_;
};

TEST_F(Fragments, TheHeadComesOnceAndEachPieceHasItsPackets) {
  MovieFragments fragments(*like_);
  ASSERT_GE(fragments.begin(nullptr), 0);
  put(fragments, "first", 0);
  put(fragments, "second", 40);
  Bytes boxes;
  ASSERT_GE(fragments.take(boxes), 0);
  EXPECT_EQ(names(boxes), "ftyp moov moof mdat ");
  EXPECT_EQ(media(boxes), "firstsecond");
  EXPECT_TRUE(holds(boxes, "A walk"));
  put(fragments, "third", 80);
  ASSERT_GE(fragments.take(boxes), 0);
  EXPECT_EQ(names(boxes), "moof mdat ");
  EXPECT_EQ(media(boxes), "third");
}

TEST_F(Fragments, WithoutNewPacketsThereIsNothing) {
  MovieFragments fragments(*like_);
  ASSERT_GE(fragments.begin(nullptr), 0);
  put(fragments, "first", 0);
  Bytes boxes;
  ASSERT_GE(fragments.take(boxes), 0);
  ASSERT_GE(fragments.take(boxes), 0);
  EXPECT_TRUE(boxes.empty());
}

TEST_F(Fragments, TheLastPieceHasTheRest) {
  MovieFragments fragments(*like_);
  ASSERT_GE(fragments.begin(nullptr), 0);
  put(fragments, "first", 0);
  Bytes boxes;
  ASSERT_GE(fragments.take(boxes), 0);
  put(fragments, "last", 40);
  ASSERT_GE(fragments.take_last(boxes), 0);
  EXPECT_EQ(names(boxes), "moof mdat ");
  EXPECT_EQ(media(boxes), "last");
}

// AC-3 says in its first packet how it sounds: nothing is given out before, and nothing is lost.
TEST_F(Fragments, AHeadThatNeedsAPacketWaitsForIt) {
  AVStream& sound = *avformat_new_stream(like_.get(), nullptr);
  sound.time_base = {1, 48000};
  sound.codecpar->codec_type = AVMEDIA_TYPE_AUDIO;
  sound.codecpar->codec_id = AV_CODEC_ID_AC3;
  sound.codecpar->sample_rate = 48000;
  sound.codecpar->frame_size = 1536;
  av_channel_layout_default(&sound.codecpar->ch_layout, 1);
  MovieFragments fragments(*like_);
  ASSERT_GE(fragments.begin(nullptr), 0);
  put(fragments, "first", 0);
  Bytes boxes;
  ASSERT_GE(fragments.take(boxes), 0);
  EXPECT_TRUE(boxes.empty());
  std::string packet(160, '<');
  packet.replace(0, 7, std::string("\x0b\x77\0\0\x14\x40\x20", 7));
  put(fragments, packet, 0, 1);
  ASSERT_GE(fragments.take_last(boxes), 0);
  EXPECT_TRUE(holds(boxes, "dac3"));
  EXPECT_TRUE(holds(boxes, "first") && holds(boxes, packet));
}

}  // namespace
}  // namespace biseam::tool
