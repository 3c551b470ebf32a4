#pragma once

#include "media/libav.hpp"
#include "picture/picture.hpp"

namespace biseam::tool {

// Any picture as RGB by its own matrix and range, or those that are likely.  False when its format can't be converted.
bool convert_to_rgb(const AVFrame& frame, Rgb& to);

}  // namespace biseam::tool
