#include "picture/encode.hpp"

#include <stdexcept>

#include "media/libav.hpp"
#include "picture/plane.hpp"

namespace biseam::tool {
namespace {

constexpr int kJpegQuantiser = 2;  // the finest that all JPEG readers handle well

void check(int status, const char* what) {
  if (status < 0) throw std::runtime_error(std::string(what) + ": " + libav_reason(status));
}

Libav<AVFrame> make_frame(int width, int height, AVPixelFormat format) {
  Libav<AVFrame> frame(av_frame_alloc());
  if (!frame) throw std::bad_alloc();
  frame->width = width;
  frame->height = height;
  frame->format = format;
  frame->color_range = AVCOL_RANGE_JPEG;
  check(av_frame_get_buffer(frame.get(), 0), "picture buffer");
  return frame;
}

std::vector<std::uint8_t> encode(AVCodecID id, AVFrame* frame) {
  const AVCodec* codec = avcodec_find_encoder(id);
  if (!codec) throw std::runtime_error("libavcodec was built without this encoder");
  Libav<AVCodecContext> encoder(avcodec_alloc_context3(codec));
  Libav<AVPacket> packet(av_packet_alloc());
  if (!encoder || !packet) throw std::bad_alloc();
  encoder->width = frame->width;
  encoder->height = frame->height;
  encoder->pix_fmt = AVPixelFormat(frame->format);
  encoder->color_range = AVCOL_RANGE_JPEG;
  encoder->time_base = {1, 1};
  if (id == AV_CODEC_ID_MJPEG) {
    encoder->flags |= AV_CODEC_FLAG_QSCALE;
    encoder->global_quality = frame->quality = FF_QP2LAMBDA * kJpegQuantiser;
  }
  check(avcodec_open2(encoder.get(), codec, nullptr), "encoder");
  check(avcodec_send_frame(encoder.get(), frame), "encoder");
  check(avcodec_send_frame(encoder.get(), nullptr), "encoder");
  check(avcodec_receive_packet(encoder.get(), packet.get()), "encoder");
  return {packet->data, packet->data + packet->size};
}

std::uint8_t* row(AVFrame& frame, int plane, int y) { return frame.data[plane] + std::ptrdiff_t(y) * frame.linesize[plane]; }

template <class Picture>
std::vector<std::uint8_t> encode_packed(const Picture& picture, std::size_t channels, AVPixelFormat format) {
  const Libav<AVFrame> frame = make_frame(picture.width, picture.height, format);
  const std::size_t row_bytes = std::size_t(picture.width) * channels;
  const PlaneView pixels{picture.bytes.data(), std::ptrdiff_t(row_bytes), row_bytes, std::size_t(picture.height)};
  copy_plane(pixels, frame->data[0], frame->linesize[0]);
  return encode(AV_CODEC_ID_PNG, frame.get());
}

}  // namespace

std::vector<std::uint8_t> encode_png(const Rgb& picture) { return encode_packed(picture, 3, AV_PIX_FMT_RGB24); }
std::vector<std::uint8_t> encode_png(const Rgba& picture) { return encode_packed(picture, 4, AV_PIX_FMT_RGBA); }

std::vector<std::uint8_t> encode_jpeg(const Nv12& picture) {
  const Libav<AVFrame> frame = make_frame(picture.width, picture.height, AV_PIX_FMT_YUVJ420P);
  copy_plane(luma_of(picture), frame->data[0], frame->linesize[0]);
  part_chroma(chroma_of(picture), {frame->data[1], frame->data[2], frame->linesize[1], frame->linesize[2]});
  return encode(AV_CODEC_ID_MJPEG, frame.get());
}

std::vector<std::uint8_t> encode_jpeg(const Rgb& picture) {
  const Libav<AVFrame> frame = make_frame(picture.width, picture.height, AV_PIX_FMT_YUVJ444P);
  const std::uint8_t* rgb = picture.bytes.data();
  for (int y = 0; y < picture.height; ++y) {
    for (int x = 0; x < picture.width; ++x, rgb += 3) {
      std::uint8_t ycc[3];
      rgb_to_ycc(rgb, ycc);
      for (int plane = 0; plane < 3; ++plane) row(*frame, plane, y)[x] = ycc[plane];
    }
  }
  return encode(AV_CODEC_ID_MJPEG, frame.get());
}

std::vector<std::uint8_t> encode_raw(const Nv12& picture) {
  std::vector<std::uint8_t> bytes(picture.luma);
  bytes.insert(bytes.end(), picture.chroma.begin(), picture.chroma.end());
  return bytes;
}

}  // namespace biseam::tool
