#include "picture/convert_rgb.hpp"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <cstring>
#include <vector>

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

bool is_deep_rgb_or_gray(const AVPixFmtDescriptor& format) {
  const bool is_plain = (format.flags & (AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BAYER | AV_PIX_FMT_FLAG_FLOAT)) == 0;
  return is_plain && format.comp[0].depth > 8 && ((format.flags & AV_PIX_FMT_FLAG_RGB) != 0 || format.nb_components < 3);
}

// To the nearest value; libswscale would go by way of YUV or cut the lower bits off.
void round_to_rgb(const AVFrame& frame, const AVPixFmtDescriptor& format, Rgb& to) {
  const std::uint32_t most = (1u << format.comp[0].depth) - 1;
  const bool is_gray = format.nb_components < 3;
  std::vector<std::uint16_t> line(std::size_t(frame.width));
  const std::uint8_t* planes[4] = {frame.data[0], frame.data[1], frame.data[2], frame.data[3]};
  for (int y = 0; y < frame.height; ++y) {
    std::uint8_t* const row = &to.bytes[std::size_t(y) * std::size_t(frame.width) * 3];
    for (int channel = 0; channel < 3; ++channel) {
      if (channel == 0 || !is_gray) {
        av_read_image_line(line.data(), planes, frame.linesize, &format, 0, y, channel, frame.width, 0);
      }
      for (std::size_t x = 0; x < line.size(); ++x) {
        row[3 * x + std::size_t(channel)] = std::uint8_t((std::min<std::uint32_t>(line[x], most) * 255 + most / 2) / most);
      }
    }
  }
}

}  // namespace

bool convert_to_rgb(const AVFrame& frame, Rgb& to) {
  const AVPixFmtDescriptor& format = *av_pix_fmt_desc_get(AVPixelFormat(frame.format));
  if (is_deep_rgb_or_gray(format)) {
    to = Rgb(frame.width, frame.height);
    round_to_rgb(frame, format, to);
    return true;
  }
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
