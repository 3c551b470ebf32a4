// From decoded pictures to the two planes the engine reads.
#pragma once

#include <string>

#include "media/libav.hpp"
#include "picture/picture.hpp"

namespace biseam::tool {

// How pictures of a format get there.
struct FormatPlan {
  bool usable = false;
  bool dithered = false;   // more than 8 bits
  bool resampled = false;  // chroma of another size
  bool from_rgb = false;   // becomes full-range BT.601
};
FormatPlan plan_format(AVPixelFormat format);

// What is lost on the way, for a notice; empty when nothing is.
std::string loss_text(AVPixelFormat format);

// Planes of the frame where they fit as they are, planes in memory where not.  Samples of YUV keep their values but for what
// the format's plan says: no matrix, no range.  A last odd row or column is left out.  The format must be usable.
Nv12View nv12_of(const AVFrame& frame, Nv12& memory);

}  // namespace biseam::tool
