// What a finished clip takes over from the one it is made of.
#pragma once

#include "media/colour.hpp"
#include "media/libav.hpp"
#include "picture/picture.hpp"

namespace biseam::tool {

struct ClipFacts {
  Size size;
  AVRational time_base;
  AVRational rate;  // pictures per second on the average; 0/1: unknown
  Colour colour;
  AVPixelFormat format = AV_PIX_FMT_NV12;  // of the panoramas, a working one
};

// The tags of the picture, or those of its stream where it has none.
Colour colour_of(const AVFrame& frame, const AVStream& stream);

}  // namespace biseam::tool
