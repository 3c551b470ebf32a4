#include "clip/read/clip_facts.hpp"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include "media/pixel_format.hpp"

namespace biseam::tool {
namespace {

// What the way to the working format changes.
void adapt(AVPixelFormat format, Colour& colour) {
  const bool is_rgb = (av_pix_fmt_desc_get(working_format(format))->flags & AV_PIX_FMT_FLAG_RGB) != 0;
  if (is_rgb || says_full_range(format)) colour.range = AVCOL_RANGE_JPEG;
  if (is_rgb) colour.matrix = AVCOL_SPC_RGB;
}

}  // namespace

Colour colour_of(const AVFrame& frame, const AVStream& stream) {
  const AVCodecParameters& told = *stream.codecpar;
  Colour colour = colour_of(frame);
  if (colour.range == AVCOL_RANGE_UNSPECIFIED) colour.range = told.color_range;
  if (colour.matrix == AVCOL_SPC_UNSPECIFIED) colour.matrix = told.color_space;
  if (colour.primaries == AVCOL_PRI_UNSPECIFIED) colour.primaries = told.color_primaries;
  if (colour.transfer == AVCOL_TRC_UNSPECIFIED) colour.transfer = told.color_trc;
  if (colour.siting == AVCHROMA_LOC_UNSPECIFIED) colour.siting = told.chroma_location;
  if (working_format(AVPixelFormat(frame.format)) != AV_PIX_FMT_NONE) adapt(AVPixelFormat(frame.format), colour);
  return colour;
}

}  // namespace biseam::tool
