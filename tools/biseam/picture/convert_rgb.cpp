#include "picture/convert_rgb.hpp"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <cstring>

namespace biseam::tool {
namespace {

bool is_full_range(const AVFrame& frame) {
  if (frame.color_range != AVCOL_RANGE_UNSPECIFIED) return frame.color_range == AVCOL_RANGE_JPEG;
  const AVPixFmtDescriptor* format = av_pix_fmt_desc_get(AVPixelFormat(frame.format));
  return (format->flags & AV_PIX_FMT_FLAG_RGB) != 0 || std::strncmp(format->name, "yuvj", 4) == 0 || format->nb_components < 3;
}

// The matrix of the frame, or the one that its size makes likely.
int colour_matrix(const AVFrame& frame) {
  switch (frame.colorspace) {
    case AVCOL_SPC_BT709:
      return SWS_CS_ITU709;
    case AVCOL_SPC_BT2020_NCL:
    case AVCOL_SPC_BT2020_CL:
      return SWS_CS_BT2020;
    default:
      return SWS_CS_ITU601;
  }
}

}  // namespace

bool convert_to_rgb(const AVFrame& frame, Rgb& to) {
  to = Rgb(frame.width, frame.height);
  Libav<SwsContext> scaler(sws_getContext(
      frame.width, frame.height, AVPixelFormat(frame.format), frame.width, frame.height, AV_PIX_FMT_RGB24,
      SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP | SWS_BITEXACT, nullptr, nullptr, nullptr));
  if (!scaler) return false;
  sws_setColorspaceDetails(scaler.get(), sws_getCoefficients(colour_matrix(frame)), is_full_range(frame),
                           sws_getCoefficients(SWS_CS_ITU601), 1, 0, 1 << 16, 1 << 16);
  std::uint8_t* const planes[4] = {to.bytes.data(), nullptr, nullptr, nullptr};
  const int strides[4] = {frame.width * 3, 0, 0, 0};
  return sws_scale(scaler.get(), frame.data, frame.linesize, 0, frame.height, planes, strides) == frame.height;
}

}  // namespace biseam::tool
