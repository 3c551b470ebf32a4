#pragma once

#include "media/libav.hpp"

namespace biseam::tool {

// RGB of more than 8 bits from 4:4:4 of more than 8 bits, to the nearest value; libswscale is off by as much as 1 in 255.
// is_full: the range of luma and chroma.  rgb: of the same size, all of it 0.
void fill_deep_rgb(const AVFrame& yuv, bool is_full, AVFrame& rgb);

}  // namespace biseam::tool
