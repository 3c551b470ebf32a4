#include "picture/decode.hpp"

#include <stdexcept>

#include "base/failure.hpp"
#include "media/decoder.hpp"
#include "media/frame_converter.hpp"
#include "media/pixel_format.hpp"
#include "media/upright.hpp"
#include "picture/decode_tiff.hpp"

namespace biseam::tool {
namespace {

constexpr int kAnyError = AV_EF_EXPLODE | AV_EF_CRCCHECK | AV_EF_BITSTREAM | AV_EF_BUFFER;

[[noreturn]] void refuse(const Container& source, const std::string& what) { source.refuse(what); }

// The first frame the decoder gives, fed from the stream and drained at its end.
Libav<AVFrame> first_frame(Container& source, int stream) {
  const Libav<AVCodecContext> decoder = open_decoder(source, *source->streams[stream], {"", kAnyError, 1});
  Libav<AVPacket> packet(av_packet_alloc());
  Libav<AVFrame> frame(av_frame_alloc());
  if (!packet || !frame) throw std::bad_alloc();
  bool drained = false;
  for (;;) {
    const int received = avcodec_receive_frame(decoder.get(), frame.get());
    if (received == 0) break;
    if (received != AVERROR(EAGAIN)) refuse(source, "damaged or cut short: " + libav_reason(received));
    if (drained) refuse(source, "holds no whole picture");
    const Container::Read read = source.read(*packet);
    if (read == Container::Read::damage || (packet->flags & AV_PKT_FLAG_CORRUPT) != 0) refuse(source, "damaged or cut short");
    drained = read == Container::Read::end;
    if (!drained && packet->stream_index != stream) {
      av_packet_unref(packet.get());
      continue;
    }
    const int sent = avcodec_send_packet(decoder.get(), drained ? nullptr : packet.get());
    av_packet_unref(packet.get());
    if (sent < 0) refuse(source, "damaged or cut short: " + libav_reason(sent));
  }
  if (frame->decode_error_flags != 0 || (frame->flags & AV_FRAME_FLAG_CORRUPT) != 0) refuse(source, "damaged or cut short");
  return frame;
}

}  // namespace

DecodedPicture decode_picture(Container& source) {
  const int stream = av_find_best_stream(source.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
  if (stream < 0) refuse(source, "is not a picture");
  return decode_picture(source, stream);
}

DecodedPicture decode_picture(Container& source, int stream) {
  const bool is_tiff = source->streams[stream]->codecpar->codec_id == AV_CODEC_ID_TIFF;
  Libav<AVFrame> frame = is_tiff ? decode_tiff(source, stream) : first_frame(source, stream);
  if (!source.is_picture()) {
    const std::unique_ptr<Upright> upright = make_upright(source, *source->streams[stream], *frame);
    if (upright) frame = upright->apply(*frame);
  }
  if (frame->width < 2 || frame->height < 2) refuse(source, "is smaller than 2 x 2 pixels");
  if (frame->chroma_location == AVCHROMA_LOC_UNSPECIFIED) frame->chroma_location = AVCHROMA_LOC_CENTER;
  if (is_full_range(*frame)) frame->color_range = AVCOL_RANGE_JPEG;
  try {
    return {FrameConverter().to_working(*frame), working_loss(AVPixelFormat(frame->format))};
  } catch (const std::runtime_error& reason) {
    refuse(source, reason.what());
  }
}

}  // namespace biseam::tool
