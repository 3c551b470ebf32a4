// Which pixel formats panoramas are encoded in, and that their samples arrive.
#include "clip/write/encoder.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <tuple>

#include "base/failure.hpp"
#include "clip/write/panorama_pool.hpp"
#include "media/pixel_format.hpp"
#include "support/random_source.hpp"
#include "tool/support/samples.hpp"

namespace biseam::tool {
namespace {

using namespace test;

constexpr Size kSize{64, 32};

struct Case {
  const char *encoder, *panoramas, *encoded;
  const char* told = "";
  int profile = FF_PROFILE_UNKNOWN;
  AVColorRange range = AVCOL_RANGE_MPEG;
};

std::string name_of(const testing::TestParamInfo<Case>& info) {
  return std::string(info.param.encoder) + "_" + info.param.panoramas + (info.param.range == AVCOL_RANGE_JPEG ? "_full" : "");
}

ClipFacts facts_of(const Case& wanted) {
  const Colour colour{wanted.range, AVCOL_SPC_BT709, AVCOL_PRI_BT709, AVCOL_TRC_BT709, AVCHROMA_LOC_LEFT};
  return {kSize, {1, 25}, {25, 1}, colour, av_get_pix_fmt(wanted.panoramas)};
}

// Without loss where the encoder can.
EncoderSettings settings_of(const Case& wanted) {
  av_log_set_level(AV_LOG_QUIET);
  EncoderSettings settings;
  settings.name = wanted.encoder;
  const bool is_x264 = settings.name.starts_with("libx264"), is_x265 = settings.name == "libx265";
  if (is_x264) settings.crf = 0;
  if (is_x264 || is_x265) settings.preset = "ultrafast";
  if (is_x265) settings.crf = 0;
  return settings;
}

Libav<AVFrame> panorama(const ClipFacts& facts) {
  PanoramaPool pool(facts.size, facts.format, facts.colour);
  Libav<AVFrame> frame = pool.frame();
  for (const AVBufferRef* buffer : frame->buf) {
    if (buffer) std::memset(buffer->data, 0, buffer->size);
  }
  // Smooth, with the last bit of every depth in use.
  fill(*frame, [&](int component, int x, int y) {
    const int bits = described(*frame).comp[component].depth;
    return (60u << (bits - 8)) + unsigned(component * 20 + x + 2 * y);
  });
  return frame;
}

// What the decoder makes of the packets.
Libav<AVFrame> decoded(Encoder& encoder) {
  const Libav<AVPacket> packet(av_packet_alloc());
  const Libav<AVCodecContext> decoder(avcodec_alloc_context3(avcodec_find_decoder(encoder.context().codec_id)));
  Libav<AVCodecParameters> parameters(avcodec_parameters_alloc());
  encoder.describe(*parameters);
  EXPECT_GE(avcodec_parameters_to_context(decoder.get(), parameters.get()), 0);
  EXPECT_GE(avcodec_open2(decoder.get(), nullptr, nullptr), 0);
  EXPECT_TRUE(encoder.receive(*packet));
  EXPECT_GE(avcodec_send_packet(decoder.get(), packet.get()), 0);
  EXPECT_GE(avcodec_send_packet(decoder.get(), nullptr), 0);
  Libav<AVFrame> frame(av_frame_alloc());
  EXPECT_GE(avcodec_receive_frame(decoder.get(), frame.get()), 0);
  return frame;
}

class Encoded : public testing::TestWithParam<Case> {};
INSTANTIATE_TEST_SUITE_P(Encoder, Encoded,
                         testing::Values(Case{"libx264", "yuv420p", "yuv420p"}, Case{"libx264", "nv12", "nv12"},
                                         Case{"libx264", "yuv420p", "yuvj420p", "", FF_PROFILE_UNKNOWN, AVCOL_RANGE_JPEG},
                                         Case{"libx264", "yuv422p", "yuv422p"}, Case{"libx264", "nv16", "nv16"},
                                         Case{"libx264", "yuv444p", "yuv444p"}, Case{"libx264", "yuv420p10le", "yuv420p10le"},
                                         Case{"libx264", "p010le", "yuv420p10le"}, Case{"libx264", "p210le", "yuv422p10le"},
                                         Case{"libx264", "yuv422p10le", "yuv422p10le"},
                                         Case{"libx264", "yuv444p10le", "yuv444p10le"}, Case{"libx264", "nv24", "yuv444p"},
                                         Case{"libx264", "gray", "gray"}, Case{"libx264rgb", "gbrp", "bgr24"},
                                         Case{"libx265", "yuv420p", "yuv420p"}, Case{"libx265", "yuv420p10le", "yuv420p10le"},
                                         Case{"libx265", "yuv422p12le", "yuv422p12le"}, Case{"libx265", "yuv444p", "yuv444p"},
                                         Case{"ffv1", "yuv420p12le", "yuv420p12le"}, Case{"ffv1", "gbrp12le", "gbrp12le"},
                                         Case{"ffv1", "nv16", "yuv422p"}, Case{"ffv1", "nv12", "yuv420p"}),
                         name_of);

TEST_P(Encoded, KeepsDepthAndChroma) {
  const ClipFacts facts = facts_of(GetParam());
  testing::internal::CaptureStderr();
  Encoder encoder(settings_of(GetParam()), facts, false);
  EXPECT_STREQ(av_get_pix_fmt_name(encoder.context().pix_fmt), GetParam().encoded);
  const Libav<AVFrame> sent = panorama(facts);
  encoder.send(*sent, 0, 1);
  encoder.finish();
  const Libav<AVFrame> got = decoded(encoder);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  const bool is_gray = facts.format == AV_PIX_FMT_GRAY8;  // which some decoders give neutral chroma
  EXPECT_TRUE(is_gray || planar_format(AVPixelFormat(got->format)) == planar_format(facts.format));
  const bool is_deep = described(*sent).comp[0].depth > 8;
  const std::string name = GetParam().encoder;
  const bool is_lossless = name != "libx265" && !(name == "libx264" && is_deep);
  for (int component = 0; component < described(*sent).nb_components; ++component) {
    int errors = 0;
    const int rows = rows_of(*sent, component), columns = columns_of(*sent, component);
    for (int y = 0; y < rows; ++y) {
      for (int x = 0; x < columns; ++x) {
        errors += std::abs(int(get_sample(*got, component, x, y)) - int(get_sample(*sent, component, x, y)));
      }
    }
    EXPECT_LE(errors, is_lossless ? 0 : rows * columns) << component;  // at most the last of 10 or 12 bits on the average
  }
}

TEST(Encoder, WritesTheProfilesOfTheDepth) {
  const auto profile = [](const Case& wanted) {
    Encoder encoder(settings_of(wanted), facts_of(wanted), false);
    const ClipFacts facts = facts_of(wanted);
    encoder.send(*panorama(facts), 0, 1);
    encoder.finish();
    const Libav<AVPacket> packet(av_packet_alloc());
    EXPECT_TRUE(encoder.receive(*packet));
    const Libav<AVCodecContext> decoder(avcodec_alloc_context3(avcodec_find_decoder(encoder.context().codec_id)));
    EXPECT_GE(avcodec_open2(decoder.get(), nullptr, nullptr), 0);
    EXPECT_GE(avcodec_send_packet(decoder.get(), packet.get()), 0);
    EXPECT_GE(avcodec_send_packet(decoder.get(), nullptr), 0);
    const Libav<AVFrame> frame(av_frame_alloc());
    EXPECT_GE(avcodec_receive_frame(decoder.get(), frame.get()), 0);
    return decoder->profile;
  };
  EXPECT_EQ(profile({"libx265", "yuv420p10le", ""}), FF_PROFILE_HEVC_MAIN_10);
  EXPECT_EQ(profile({"libx265", "yuv420p", ""}), FF_PROFILE_HEVC_MAIN);
  EXPECT_EQ(profile({"libx264", "yuv420p10le", ""}), FF_PROFILE_H264_HIGH_10);
  EXPECT_EQ(profile({"libx264", "yuv422p10le", ""}), FF_PROFILE_H264_HIGH_422);
  EXPECT_EQ(profile({"libx264", "yuv444p10le", ""}), FF_PROFILE_H264_HIGH_444_PREDICTIVE);
}

class Reduced : public testing::TestWithParam<Case> {};
INSTANTIATE_TEST_SUITE_P(Encoder, Reduced,
                         testing::Values(Case{"libx264", "yuv420p12le", "yuv420p10le", "samples of 12 bits are rounded to 10"},
                                         Case{"mpeg4", "yuv422p10le", "yuv420p",
                                              "samples of 10 bits are rounded to 8, chroma is resampled to 4:2:0"},
                                         Case{"mpeg4", "yuv444p", "yuv420p", "chroma is resampled to 4:2:0"},
                                         Case{"mpeg4", "nv16", "yuv420p", "chroma is resampled to 4:2:0"},
                                         Case{"mpeg4", "p010le", "yuv420p", "samples of 10 bits are rounded to 8"},
                                         Case{"libx264", "gbrp", "yuvj444p", "RGB becomes BT.601 with full range", 0,
                                              AVCOL_RANGE_JPEG}),
                         name_of);

TEST_P(Reduced, IsToldAndTheNearest) {
  const ClipFacts facts = facts_of(GetParam());
  testing::internal::CaptureStderr();
  Encoder encoder(settings_of(GetParam()), facts, false);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            std::string("biseam: encoder ") + GetParam().encoder + ": " + GetParam().told + "\n");
  EXPECT_STREQ(av_get_pix_fmt_name(encoder.context().pix_fmt), GetParam().encoded);
  // A flat picture, so that no encoder has an excuse.
  PanoramaPool pool(facts.size, facts.format, facts.colour);
  const Libav<AVFrame> flat = pool.frame();
  for (const AVBufferRef* buffer : flat->buf) {
    if (buffer) std::memset(buffer->data, 0, buffer->size);
  }
  fill(*flat,
       [&](int component, int, int) { return (100u + 20 * unsigned(component)) << (described(*flat).comp[0].depth - 8); });
  encoder.send(*flat, 0, 1);
  encoder.finish();
  const Libav<AVFrame> got = decoded(encoder);
  const bool was_rgb = facts.format == AV_PIX_FMT_GBRP;  // 100, 120 and 140 of red, green and blue
  const double expected[3] = {was_rgb ? 116.3 : 100, was_rgb ? 141.4 : 120, was_rgb ? 116.4 : 140};
  for (int component = 0; component < 3; ++component) {
    const int scale = 1 << (described(*got).comp[0].depth - 8);
    EXPECT_NEAR(get_sample(*got, component, 8, 8), expected[component] * scale, 1.5 * scale) << component;
  }
}

// Theora takes the time base for the time of a picture, MPEG-1 and -2 know a few rates.
TEST(Encoder, WritesEveryPictureAtItsTime) {
  for (const auto& [name, rate, told] :
       {std::tuple{"libtheora", AVRational{25, 1}, ""}, std::tuple{"mpeg1video", AVRational{25, 1}, ""},
        std::tuple{"mpeg2video", AVRational{30, 1}, ""}, std::tuple{"libx264", AVRational{25, 1}, ""},
        std::tuple{"mpeg1video", AVRational{90, 1},
                   "biseam: encoder mpeg1video: knows no 90 pictures a second and is told 60; their times in the file are "
                   "right\n"},
        std::tuple{"libtheora", AVRational{0, 1}, ""}}) {
    SCOPED_TRACE(std::string(name) + " " + std::to_string(rate.num));
    ClipFacts facts = facts_of({name, "yuv420p", "yuv420p"});
    facts.time_base = {1, 15360};
    facts.rate = rate;
    testing::internal::CaptureStderr();
    Encoder encoder(settings_of({name, "yuv420p", "yuv420p"}), facts, false);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), told);
    std::map<std::int64_t, std::int64_t> expected, found;  // durations by time
    const Libav<AVPacket> packet(av_packet_alloc());
    const auto receive_all = [&] {
      while (encoder.receive(*packet)) {
        found[packet->pts] = packet->duration;
        EXPECT_LE(packet->dts, packet->pts);
      }
    };
    std::int64_t time = 77;
    for (const std::int64_t duration : {512, 700, 512, 100}) {
      const Libav<AVFrame> sent = panorama(facts);
      fill(*sent, [&](int, int x, int y) { return unsigned(60 + (x * 3 + y + int(time / 7)) % 120); });
      encoder.send(*sent, time, duration);
      expected[time] = duration;
      time += duration;
      receive_all();
    }
    encoder.finish();
    receive_all();
    EXPECT_EQ(found, expected);
  }
}

// A picture like the one before is an empty packet to it.
TEST(Encoder, TellsOfPicturesThatItLeavesOut) {
  const Case wanted{"libtheora", "yuv420p", "yuv420p"};
  const ClipFacts facts = facts_of(wanted);
  Encoder encoder(settings_of(wanted), facts, false);
  const Libav<AVFrame> same = panorama(facts);
  const Libav<AVPacket> packet(av_packet_alloc());
  int packets = 0;
  testing::internal::CaptureStderr();
  for (int k = 0; k <= 3; ++k) {
    k < 3 ? encoder.send(*same, k, 1) : encoder.finish();
    for (; encoder.receive(*packet); ++packets) EXPECT_GT(packet->size, 0);
  }
  EXPECT_EQ(packets, 1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "biseam: encoder libtheora: it leaves out pictures, 2 in all, and those before them stay longer\n");
}

TEST(Encoder, SharesThePlanesThatItTakes) {
  for (const char* format : {"yuv420p", "nv12", "yuv422p"}) {
    const Case wanted{"libx264", format, format};
    const ClipFacts facts = facts_of(wanted);
    const Libav<AVFrame> sent = panorama(facts);
    FrameConverter converter;
    EXPECT_EQ(converter.convert(*sent, Encoder(settings_of(wanted), facts, false).context().pix_fmt)->data[0], sent->data[0]);
  }
}

}  // namespace
}  // namespace biseam::tool
