#include "video/clip_facts.hpp"

namespace biseam::tool {

Colour colour_of(const AVFrame& frame, const AVStream& stream) {
  const AVCodecParameters& told = *stream.codecpar;
  Colour colour{frame.color_range, frame.colorspace, frame.color_primaries, frame.color_trc, frame.chroma_location};
  if (colour.range == AVCOL_RANGE_UNSPECIFIED) colour.range = told.color_range;
  if (frame.format == AV_PIX_FMT_YUVJ420P) colour.range = AVCOL_RANGE_JPEG;
  if (colour.matrix == AVCOL_SPC_UNSPECIFIED) colour.matrix = told.color_space;
  if (colour.primaries == AVCOL_PRI_UNSPECIFIED) colour.primaries = told.color_primaries;
  if (colour.transfer == AVCOL_TRC_UNSPECIFIED) colour.transfer = told.color_trc;
  if (colour.siting == AVCHROMA_LOC_UNSPECIFIED) colour.siting = told.chroma_location;
  return colour;
}

}  // namespace biseam::tool
