// From decoded pictures to the two planes the engine reads.
#pragma once

#include <string>

#include "libav.hpp"
#include "picture.hpp"

namespace biseam::tool {

// Planes of the frame where they fit as they are, planes in memory where not.  Samples keep their values: no matrix, no range.
// A last odd row or column is left out.  The frame's format must be known to can_make_nv12().
Nv12View nv12_of(const AVFrame& frame, Nv12& memory);

bool can_make_nv12(AVPixelFormat format);

}  // namespace biseam::tool
