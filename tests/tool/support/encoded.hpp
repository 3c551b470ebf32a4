// Picture files as other programs write them.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "media/libav.hpp"

namespace biseam::test {

// A picture by any of libav's encoders.  fill gets the frame, whose rows it writes.
inline std::string encoded(const char* encoder, AVPixelFormat format, int width, int height,
                           const std::function<void(AVFrame&)>& fill, const std::string& compression = "") {
  const AVCodec* codec = avcodec_find_encoder_by_name(encoder);
  const tool::Libav<AVCodecContext> context(avcodec_alloc_context3(codec));
  const tool::Libav<AVFrame> frame(av_frame_alloc());
  const tool::Libav<AVPacket> packet(av_packet_alloc());
  context->width = frame->width = width;
  context->height = frame->height = height;
  context->pix_fmt = format;
  frame->format = format;
  context->time_base = {1, 1};
  AVDictionary* options = nullptr;
  if (!compression.empty()) av_dict_set(&options, "compression_algo", compression.c_str(), 0);
  EXPECT_GE(avcodec_open2(context.get(), codec, &options), 0);
  EXPECT_EQ(av_dict_count(options), 0) << "an option is not known";
  av_dict_free(&options);
  EXPECT_GE(av_frame_get_buffer(frame.get(), 0), 0);
  fill(*frame);
  EXPECT_GE(avcodec_send_frame(context.get(), frame.get()), 0);
  EXPECT_GE(avcodec_send_frame(context.get(), nullptr), 0);
  EXPECT_GE(avcodec_receive_packet(context.get(), packet.get()), 0);
  return {reinterpret_cast<const char*>(packet->data), std::size_t(packet->size)};
}

}  // namespace biseam::test
