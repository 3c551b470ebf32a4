// Owners of libav objects.
#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavcodec/bsf.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

#include <memory>
#include <string>

namespace biseam::tool {

inline constexpr AVRational kMicroseconds{1, AV_TIME_BASE};  // the base of times that stand alone

struct LibavDelete {
  void operator()(AVFrame* p) const { av_frame_free(&p); }
  void operator()(AVPacket* p) const { av_packet_free(&p); }
  void operator()(AVBSFContext* p) const { av_bsf_free(&p); }
  void operator()(AVCodecContext* p) const { avcodec_free_context(&p); }
  void operator()(AVCodecParameters* p) const { avcodec_parameters_free(&p); }
  void operator()(AVFormatContext* p) const { avformat_close_input(&p); }  // of demuxers
  void operator()(AVDictionary* p) const { av_dict_free(&p); }
  void operator()(AVBufferPool* p) const { av_buffer_pool_uninit(&p); }
  void operator()(SwsContext* p) const { sws_freeContext(p); }
  void operator()(AVIOContext* p) const {
    av_freep(&p->buffer);
    avio_context_free(&p);
  }
};

template <class T>
using Libav = std::unique_ptr<T, LibavDelete>;

inline std::string libav_reason(int code) {
  char text[AV_ERROR_MAX_STRING_SIZE] = "";
  av_strerror(code, text, sizeof text);
  return text;
}

}  // namespace biseam::tool
