// What a finished clip takes over from the one it is made of.
#pragma once

#include "media/libav.hpp"
#include "picture/picture.hpp"

namespace biseam::tool {

// Tags only: samples are never converted.
struct Colour {
  AVColorRange range = AVCOL_RANGE_UNSPECIFIED;
  AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;
  AVColorPrimaries primaries = AVCOL_PRI_UNSPECIFIED;
  AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED;
  AVChromaLocation siting = AVCHROMA_LOC_UNSPECIFIED;
};

struct ClipFacts {
  Size size;
  AVRational time_base;
  AVRational rate;  // pictures per second on the average; 0/1: unknown
  Colour colour;
};

// The tags of the picture, or those of its stream where it has none.
Colour colour_of(const AVFrame& frame, const AVStream& stream);

}  // namespace biseam::tool
