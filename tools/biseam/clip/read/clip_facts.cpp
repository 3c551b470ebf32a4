#include "clip/read/clip_facts.hpp"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <cstring>

#include "picture/to_nv12.hpp"

namespace biseam::tool {
namespace {

// What the way to NV12 changes.
void adapt(AVPixelFormat format, Colour& colour) {
  const AVPixFmtDescriptor& known = *av_pix_fmt_desc_get(format);
  if (plan_format(format).from_rgb) {
    colour.range = AVCOL_RANGE_JPEG;
    colour.matrix = AVCOL_SPC_BT470BG;
    colour.siting = AVCHROMA_LOC_CENTER;
    return;
  }
  if (std::strncmp(known.name, "yuvj", 4) == 0) colour.range = AVCOL_RANGE_JPEG;
  const bool has_chroma = known.nb_components >= 3;
  if (has_chroma && known.log2_chroma_w == 0) colour.siting = AVCHROMA_LOC_CENTER;  // the mean of two columns
  const bool top_left = colour.siting == AVCHROMA_LOC_TOPLEFT;
  if (has_chroma && known.log2_chroma_h == 0 && known.log2_chroma_w == 1 && top_left) colour.siting = AVCHROMA_LOC_LEFT;
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
  adapt(AVPixelFormat(frame.format), colour);
  return colour;
}

}  // namespace biseam::tool
