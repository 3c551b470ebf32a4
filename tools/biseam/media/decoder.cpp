#include "media/decoder.hpp"

#include <new>

#include "base/failure.hpp"
#include "base/shortage.hpp"

namespace biseam::tool {

Libav<AVCodecContext> open_decoder(const Container& source, const AVStream& stream, const DecoderSettings& settings) {
  const std::string &subject = settings.subject, prefix = subject.empty() ? "" : subject + ": ";
  const AVCodec* codec = avcodec_find_decoder(stream.codecpar->codec_id);
  if (!codec) source.refuse(prefix + "there is no decoder for " + (subject.empty() ? "this picture" : "it"));
  Libav<AVCodecContext> decoder(avcodec_alloc_context3(codec));
  if (!decoder) throw std::bad_alloc();
  int status = avcodec_parameters_to_context(decoder.get(), stream.codecpar);
  decoder->err_recognition |= settings.error_recognition;
  decoder->thread_count = settings.threads;
  decoder->pkt_timebase = stream.time_base;
  if (status >= 0) status = avcodec_open2(decoder.get(), codec, nullptr);
  if (status < 0 && was_thread_refused()) {
    throw Failure(ExitCode::system, source.name() + ": " + prefix + "no thread for decoding can be started");
  }
  if (status < 0) source.refuse(prefix + "can't be decoded: " + libav_reason(status));
  return decoder;
}

}  // namespace biseam::tool
