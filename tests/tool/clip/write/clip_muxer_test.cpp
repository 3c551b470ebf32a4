#include "clip/write/clip_muxer.hpp"

#include <gtest/gtest.h>

#include <cstring>

#include "tool/support/clip_probe.hpp"
#include "tool/support/expect_failure.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using namespace test;

// A clip in memory, of which a stream is copied.
class Copied : public testing::TestWithParam<const char*> {
 protected:
  Copied() : path_(folder_ / (std::string("out.") + GetParam())), from_(avformat_alloc_context()) {
    sound_ = avformat_new_stream(from_.get(), nullptr);
    sound_->time_base = {1, 1000};
    sound_->codecpar->codec_type = AVMEDIA_TYPE_AUDIO;
    sound_->codecpar->codec_id = AV_CODEC_ID_MP3;
    sound_->codecpar->sample_rate = 48000;
    sound_->codecpar->frame_size = 1152;
    sound_->codecpar->bit_rate = 64000;
    av_channel_layout_default(&sound_->codecpar->ch_layout, 1);
    av_dict_set(&sound_->metadata, "language", "deu", 0);
    av_dict_set(&from_->metadata, "title", "A walk", 0);
  }

  static Libav<AVPacket> packet_at(std::int64_t time) {
    Libav<AVPacket> packet(av_packet_alloc());
    EXPECT_EQ(av_new_packet(packet.get(), 192), 0);
    std::memset(packet->data, 0, 192);
    std::memcpy(packet->data, "\xff\xfb\x54\xc0", 4);
    packet->pts = packet->dts = time;
    packet->duration = 24;
    packet->flags |= AV_PKT_FLAG_KEY;
    return packet;
  }

  // Microseconds of the packets, given in milliseconds, in the finished file.
  std::vector<std::int64_t> written(const std::vector<std::int64_t>& times, std::int64_t offset = 0) {
    ClipMuxer muxer(path_, *clip_format(path_));
    CopiedStream stream = muxer.add_copied(*sound_, "the sound");
    stream.offset = offset;
    muxer.begin(*from_);
    for (const std::int64_t time : times) muxer.copy(stream, *packet_at(time));
    EXPECT_TRUE(muxer.end());
    EXPECT_FALSE(std::filesystem::exists(path_));
    muxer.commit();
    const ClipProbe probe(path_);
    std::vector<std::int64_t> found;
    for (const PacketFacts& packet : probe.only(AVMEDIA_TYPE_AUDIO).packets) found.push_back(packet.dts);
    return found;
  }

  struct Free {
    void operator()(AVFormatContext* clip) const { avformat_free_context(clip); }
  };
  ScratchFolder folder_;
  std::string path_;
  std::unique_ptr<AVFormatContext, Free> from_;
  AVStream* sound_;
};

TEST_P(Copied, StreamsSayWhatTheySaid) {
  EXPECT_EQ(written({0, 24, 48}), (std::vector<std::int64_t>{0, 24000, 48000}));
  const ClipProbe probe(path_);
  EXPECT_EQ(probe.metadata.at("title"), "A walk");
  const StreamFacts& sound = probe.only(AVMEDIA_TYPE_AUDIO);
  EXPECT_EQ(sound.codec, "mp3");
  EXPECT_EQ(sound.metadata.at("language"), "deu");
}

TEST_P(Copied, TimesAreMovedByTheOffset) { EXPECT_EQ(written({100, 124}, -100), (std::vector<std::int64_t>{0, 24000})); }

// Matroska takes the same time twice; the others need a later one, by one sample.
TEST_P(Copied, TimesNeverGoBack) {
  const std::vector<std::int64_t> found = written({0, 48, 24, 96});
  ASSERT_EQ(found.size(), 4u);
  EXPECT_EQ(found[1], 48000);
  EXPECT_NEAR(double(found[2]), 48000 + (std::string(GetParam()) == "mkv" ? 0 : 1e6 / 48000), 1);
  EXPECT_EQ(found[3], 96000);
}

TEST_P(Copied, AStreamThatIsDroppedTakesNoPackets) {
  ClipMuxer muxer(path_, *clip_format(path_));
  CopiedStream kept = muxer.add_copied(*sound_, "the sound"), dropped;
  muxer.begin();
  muxer.copy(dropped, *packet_at(0));
  muxer.copy(kept, *packet_at(0));
  EXPECT_TRUE(muxer.end());
  muxer.commit();
  const ClipProbe probe(path_);
  EXPECT_EQ(probe.only(AVMEDIA_TYPE_AUDIO).packets.size(), 1u);
}

TEST_P(Copied, WhatIsNotCommittedLeavesNothing) {
  {
    ClipMuxer muxer(path_, *clip_format(path_));
    muxer.add_copied(*sound_, "the sound");
    muxer.begin();
  }
  EXPECT_TRUE(folder_.names().empty());
}

INSTANTIATE_TEST_SUITE_P(ClipMuxer, Copied, testing::Values("mp4", "mov", "mkv"),
                         [](const auto& parameter) { return std::string(parameter.param); });

TEST(ClipFormat, FollowsTheExtension) {
  EXPECT_STREQ(clip_format("a.mp4")->name, "mp4");
  EXPECT_STREQ(clip_format("a.b/c.mov")->name, "mov");
  EXPECT_STREQ(clip_format("a.mkv")->name, "matroska");
  for (const char* other : {"a.webm", "a.y4m", "a", "mp4", ""}) EXPECT_EQ(clip_format(other), nullptr) << other;
}

TEST(ClipMuxer, WhatCantBeBegunOrWrittenIsNamed) {
  const ScratchFolder folder;
  const AVOutputFormat& mp4 = *clip_format("a.mp4");
  const auto [code, line] = failure_of([&] { ClipMuxer(folder / "none/a.mp4", mp4); });
  EXPECT_EQ(code, ExitCode::output);
  expect_one_line_naming(line, folder / "none/a.mp4");
  ClipMuxer muxer(folder / "a.mp4", mp4);
  const auto [begin_code, begin_line] = failure_of([&] { muxer.begin(); });  // without a stream
  EXPECT_EQ(begin_code, ExitCode::output);
  expect_one_line_naming(begin_line, (folder / "a.mp4") + ": can't be begun: ");
}

}  // namespace
}  // namespace biseam::tool
