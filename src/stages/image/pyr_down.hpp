#pragma once

#include "base/status.hpp"
#include "biseam/records.h"

namespace biseam {

// 5-tap binomial reduction of three channels.  mismatch: sizes or channels do not fit, dst untouched.

// The half where both sizes are halves rounded down, else the border routine.
Status pyr_down(const BlendImage& src, BlendImage& dst);
bool is_half(const BlendImage& src, const BlendImage& dst);

// Halves rounded down.  Sources below 4 pixels in a direction leave dst as it is.
Status pyr_down_half(const BlendImage& src, BlendImage& dst);

// Within one pixel of a half.  A column past the exact half has its middle on the source's last column.
Status pyr_down_border(const BlendImage& src, BlendImage& dst);

}  // namespace biseam
