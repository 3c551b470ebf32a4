#pragma once

#include <vector>

#include "base/size.hpp"
#include "media/libav.hpp"

namespace biseam::tool {

struct Luma {
  Size size;
  std::vector<float> codes;  // rows without padding, 0 to 255
};

// BT.601 luma with full range of a picture in a working format, not rounded to 8 bits.  That of YUV pictures that are so is
// taken as it is; others are taken by way of RGB.
Luma luma_of(const AVFrame& picture);

}  // namespace biseam::tool
