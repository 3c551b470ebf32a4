#include "picture/encode.hpp"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <new>
#include <stdexcept>

#include "media/frame_bytes.hpp"
#include "media/frame_converter.hpp"
#include "media/pixel_format.hpp"

namespace biseam::tool {
namespace {

constexpr int kJpegQuantiser = 2;  // the finest that all JPEG readers handle well

void check(int status, const char* what) {
  if (status < 0) throw std::runtime_error(std::string(what) + ": " + libav_reason(status));
}

std::vector<std::uint8_t> encode(AVCodecID id, const Libav<AVFrame>& frame) {
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
  check(avcodec_send_frame(encoder.get(), frame.get()), "encoder");
  check(avcodec_send_frame(encoder.get(), nullptr), "encoder");
  check(avcodec_receive_packet(encoder.get(), packet.get()), "encoder");
  return {packet->data, packet->data + packet->size};
}

const AVPixFmtDescriptor& described(const AVFrame& frame) { return *av_pix_fmt_desc_get(AVPixelFormat(frame.format)); }

bool is_rgb(const AVFrame& frame) { return (described(frame).flags & AV_PIX_FMT_FLAG_RGB) != 0; }

// PNG's own layouts.
AVPixelFormat png_format(const AVFrame& picture) {
  const AVPixFmtDescriptor& format = described(picture);
  if (picture.format == AV_PIX_FMT_RGBA) return AV_PIX_FMT_RGBA;
  if (picture.format == AV_PIX_FMT_GRAY8 && is_full_range(picture)) return AV_PIX_FMT_GRAY8;
  return format.comp[0].depth > 8 ? AV_PIX_FMT_RGB48BE : AV_PIX_FMT_RGB24;
}

// JPEG files have no tag for anything else.
bool is_jpeg_like(const AVFrame& picture) {
  const bool is_bt601 = picture.colorspace == AVCOL_SPC_UNSPECIFIED || picture.colorspace == AVCOL_SPC_BT470BG ||
                        picture.colorspace == AVCOL_SPC_SMPTE170M;
  const bool is_gray = described(picture).nb_components < 3;
  return !is_rgb(picture) && (is_bt601 || is_gray) && is_full_range(picture);
}

constexpr AVPixelFormat kJpegFormats[] = {AV_PIX_FMT_YUVJ420P, AV_PIX_FMT_YUVJ422P, AV_PIX_FMT_YUVJ444P};

}  // namespace

std::vector<std::uint8_t> encode_png(const AVFrame& picture) {
  const Libav<AVFrame> frame = FrameConverter().convert(picture, png_format(picture));
  return encode(AV_CODEC_ID_PNG, frame);
}

std::vector<std::uint8_t> encode_jpeg(const AVFrame& picture) {
  FrameConverter converter;
  if (is_jpeg_like(picture)) {
    return encode(AV_CODEC_ID_MJPEG,
                  converter.convert(picture, nearest_format(planar_format(AVPixelFormat(picture.format)), kJpegFormats)));
  }
  const Libav<AVFrame> rgb = is_rgb(picture) ? nullptr : converter.convert(picture, AV_PIX_FMT_RGB24);
  return encode(AV_CODEC_ID_MJPEG, converter.convert(rgb ? *rgb : picture, AV_PIX_FMT_YUVJ444P));
}

std::vector<std::uint8_t> encode_raw(const AVFrame& picture) {
  std::vector<std::uint8_t> bytes;
  append_frame(*FrameConverter().convert(picture, AV_PIX_FMT_NV12), bytes);
  return bytes;
}

}  // namespace biseam::tool
