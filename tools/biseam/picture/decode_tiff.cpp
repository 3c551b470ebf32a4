#include "picture/decode_tiff.hpp"

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

#include <cstring>
#include <new>

#include "media/decoder.hpp"

namespace biseam::tool {
namespace {

// The decoder writes into memory that holds one value, ctx->opaque's.
int get_filled_buffer(AVCodecContext* decoder, AVFrame* frame, int flags) {
  const int status = avcodec_default_get_buffer2(decoder, frame, flags);
  if (status < 0) return status;
  for (const AVBufferRef* buffer : frame->buf) {
    if (buffer) std::memset(buffer->data, *static_cast<const int*>(decoder->opaque), buffer->size);
  }
  return 0;
}

Libav<AVFrame> decode_over(Container& source, const AVStream& stream, const AVPacket& packet, int value) {
  const Libav<AVCodecContext> decoder = open_decoder(source, stream, {"", 0, 1});
  decoder->opaque = &value;
  decoder->get_buffer2 = get_filled_buffer;
  Libav<AVFrame> frame(av_frame_alloc());
  if (!frame) throw std::bad_alloc();
  int status = avcodec_send_packet(decoder.get(), &packet);
  if (status >= 0) status = avcodec_send_packet(decoder.get(), nullptr);
  if (status >= 0) status = avcodec_receive_frame(decoder.get(), frame.get());
  if (status < 0) source.refuse("damaged or cut short: " + libav_reason(status));
  return frame;
}

bool are_equal(const AVFrame& a, const AVFrame& b) {
  const auto format = AVPixelFormat(a.format);
  const AVPixFmtDescriptor& descriptor = *av_pix_fmt_desc_get(format);
  const bool has_palette = (descriptor.flags & AV_PIX_FMT_FLAG_PAL) != 0;  // with entries that nothing uses
  const int planes = has_palette ? 1 : av_pix_fmt_count_planes(format);
  for (int plane = 0; plane < planes; ++plane) {
    const int bytes = av_image_get_linesize(format, a.width, plane);
    const bool is_chroma = plane == 1 || plane == 2;
    const int rows = is_chroma ? AV_CEIL_RSHIFT(a.height, descriptor.log2_chroma_h) : a.height;
    for (std::ptrdiff_t y = 0; y < rows; ++y) {
      if (std::memcmp(a.data[plane] + y * a.linesize[plane], b.data[plane] + y * b.linesize[plane], std::size_t(bytes)) != 0) {
        return false;
      }
    }
  }
  return true;
}

}  // namespace

// Where it is to be strict, libav's decoder takes every tag that it doesn't know for damage, FFmpeg's own among them; where it
// is not, it leaves out what is damaged without a word.  What it left out shows the memory below, so two values tell.
Libav<AVFrame> decode_tiff(Container& source, int stream) {
  const Libav<AVPacket> packet(av_packet_alloc());
  if (!packet) throw std::bad_alloc();
  if (source.read(*packet) != Container::Read::packet || packet->stream_index != stream) source.refuse("damaged or cut short");
  const AVStream& picture = *source->streams[stream];
  Libav<AVFrame> frame = decode_over(source, picture, *packet, 0x00);
  const Libav<AVFrame> again = decode_over(source, picture, *packet, 0xff);
  if (!are_equal(*frame, *again)) source.refuse("damaged or cut short");
  return frame;
}

}  // namespace biseam::tool
