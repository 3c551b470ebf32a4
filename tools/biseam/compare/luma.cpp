#include "compare/luma.hpp"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <cstdint>

#include "media/frame_converter.hpp"

namespace biseam::tool {
namespace {

const AVPixFmtDescriptor& described(const AVFrame& frame) { return *av_pix_fmt_desc_get(AVPixelFormat(frame.format)); }

bool is_rgb(const AVFrame& frame) { return (described(frame).flags & AV_PIX_FMT_FLAG_RGB) != 0; }

bool has_wanted_luma(const AVFrame& picture) {
  const bool is_bt601 = picture.colorspace == AVCOL_SPC_UNSPECIFIED || picture.colorspace == AVCOL_SPC_BT470BG ||
                        picture.colorspace == AVCOL_SPC_SMPTE170M || described(picture).nb_components < 3;
  return is_bt601 && is_full_range(picture);
}

// The shares of the components, from 0 to the most their depth has.
Luma mix(const AVFrame& picture, std::initializer_list<double> shares) {
  Luma luma{{picture.width, picture.height}, {}};
  const std::size_t width = std::size_t(picture.width);
  luma.codes.resize(width * std::size_t(picture.height));
  std::vector<std::uint16_t> line(width);
  std::vector<double> row(width);
  const std::uint8_t* planes[4] = {picture.data[0], picture.data[1], picture.data[2], picture.data[3]};
  const double unit = 255.0 / ((1 << described(picture).comp[0].depth) - 1);
  for (int y = 0; y < picture.height; ++y) {
    row.assign(width, 0);
    int component = 0;
    for (const double share : shares) {
      av_read_image_line(line.data(), planes, picture.linesize, &described(picture), 0, y, component++, picture.width, 0);
      for (std::size_t x = 0; x < width; ++x) row[x] += share * line[x];
    }
    for (std::size_t x = 0; x < width; ++x) luma.codes[std::size_t(y) * width + x] = float(row[x] * unit);
  }
  return luma;
}

}  // namespace

Luma luma_of(const AVFrame& picture) {
  constexpr double kRed = 0.299, kGreen = 0.587, kBlue = 0.114;
  if (is_rgb(picture)) return mix(picture, {kRed, kGreen, kBlue});
  if (has_wanted_luma(picture)) return mix(picture, {1});
  const bool is_deep = described(picture).comp[0].depth > 8;
  return mix(*FrameConverter().convert(picture, is_deep ? AV_PIX_FMT_GBRP12 : AV_PIX_FMT_GBRP), {kRed, kGreen, kBlue});
}

}  // namespace biseam::tool
