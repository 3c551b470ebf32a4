#pragma once

#include "media/libav.hpp"

namespace biseam::tool {

// What the samples of pictures mean; tags only.
struct Colour {
  AVColorRange range = AVCOL_RANGE_UNSPECIFIED;
  AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;
  AVColorPrimaries primaries = AVCOL_PRI_UNSPECIFIED;
  AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED;
  AVChromaLocation siting = AVCHROMA_LOC_UNSPECIFIED;
};

inline Colour colour_of(const AVFrame& frame) {
  return {frame.color_range, frame.colorspace, frame.color_primaries, frame.color_trc, frame.chroma_location};
}

inline void set_colour(AVFrame& frame, const Colour& colour) {
  frame.color_range = colour.range;
  frame.colorspace = colour.matrix;
  frame.color_primaries = colour.primaries;
  frame.color_trc = colour.transfer;
  frame.chroma_location = colour.siting;
}

}  // namespace biseam::tool
