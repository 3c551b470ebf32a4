#include "media/decoder.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include "base/shortage.hpp"
#include "picture/write_picture.hpp"
#include "tool/support/expect_failure.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

class DecoderTest : public testing::Test {
 protected:
  DecoderTest() {
    Rgb picture(6, 4);
    for (std::size_t i = 0; i < picture.bytes.size(); ++i) picture.bytes[i] = std::uint8_t(3 * i);
    bytes_ = picture.bytes;
    write_picture(path_, picture);
    source_ = std::make_unique<Container>(path_);
  }

  AVStream& stream() { return *source_->get()->streams[0]; }

  void expect_refused(const DecoderSettings& settings, const std::string& what) {
    const auto [code, line] = test::failure_of([&] { open_decoder(*source_, stream(), settings); });
    EXPECT_EQ(code, ExitCode::input);
    EXPECT_EQ(line, path_ + ": " + what);
  }

  test::ScratchFolder folder_;
  std::string path_ = folder_ / "a.png";
  std::vector<std::uint8_t> bytes_;
  std::unique_ptr<Container> source_;
};

TEST_F(DecoderTest, DecodesThePacketsOfItsStream) {
  const Libav<AVCodecContext> decoder = open_decoder(*source_, stream(), {});
  const Libav<AVPacket> packet(av_packet_alloc());
  const Libav<AVFrame> frame(av_frame_alloc());
  ASSERT_EQ(source_->read(*packet), Container::Read::packet);
  ASSERT_EQ(avcodec_send_packet(decoder.get(), packet.get()), 0);
  ASSERT_EQ(avcodec_send_packet(decoder.get(), nullptr), 0);
  ASSERT_EQ(avcodec_receive_frame(decoder.get(), frame.get()), 0);
  ASSERT_EQ(frame->format, AV_PIX_FMT_RGB24);
  for (std::size_t y = 0; y < 4; ++y) {
    const std::uint8_t* row = frame->data[0] + y * std::size_t(frame->linesize[0]);
    EXPECT_TRUE(std::equal(row, row + 18, bytes_.begin() + std::ptrdiff_t(y * 18))) << y;
  }
}

TEST_F(DecoderTest, IsSetAsWanted) {
  const Libav<AVCodecContext> decoder = open_decoder(*source_, stream(), {"", AV_EF_EXPLODE | AV_EF_CRCCHECK, 1});
  EXPECT_EQ(decoder->err_recognition & (AV_EF_EXPLODE | AV_EF_CRCCHECK), AV_EF_EXPLODE | AV_EF_CRCCHECK);
  EXPECT_EQ(decoder->thread_count, 1);
  EXPECT_EQ(av_cmp_q(decoder->pkt_timebase, stream().time_base), 0);
}

TEST_F(DecoderTest, WhatHasNoneIsNamed) {
  stream().codecpar->codec_id = AV_CODEC_ID_NONE;
  expect_refused({"stream 0 (video)", 0, 1}, "stream 0 (video): there is no decoder for it");
  expect_refused({}, "there is no decoder for this picture");
}

// Raw samples of no known format.
TEST_F(DecoderTest, OneThatCantBeOpenedIsToldWithItsReason) {
  stream().codecpar->codec_id = AV_CODEC_ID_RAWVIDEO;
  stream().codecpar->format = AV_PIX_FMT_NONE;
  expect_refused({"stream 0 (video)", 0, 1}, "stream 0 (video): can't be decoded: Invalid argument");
}

TEST_F(DecoderTest, ARefusedThreadIsTheSystemsFault) {
  stream().codecpar->codec_id = AV_CODEC_ID_RAWVIDEO;
  stream().codecpar->format = AV_PIX_FMT_NONE;
  const auto open_without_threads = [&] {
    note_refused_thread();
    const auto [code, line] = test::failure_of([&] { open_decoder(*source_, stream(), {"", 0, 2}); });
    std::fprintf(stderr, "%s\n", line.c_str());
    ::_exit(int(code));
  };
  EXPECT_EXIT(open_without_threads(), testing::ExitedWithCode(6), "a.png: no thread for decoding can be started");
}

}  // namespace
}  // namespace biseam::tool
