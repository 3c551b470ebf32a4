#pragma once

#include "biseam/records.h"
#include "engine/status.hpp"

namespace biseam {

void to_gray(const BlendImage& src, BlendGray& dst);

// dst = |src - mean over 11 x 11 clipped to the image|, same size.
Status extract_detail(const BlendGray& src, BlendGray& dst);

}  // namespace biseam
