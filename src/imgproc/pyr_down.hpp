#pragma once

#include "biseam/records.h"
#include "engine/status.hpp"

namespace biseam {

// 5-tap binomial reduction.  mismatch: sizes or channels do not fit, dst untouched.
Status pyr_down(const BlendImage& src, BlendImage& dst);
Status pyr_down_half(const BlendImage& src, BlendImage& dst);    // exact halves
Status pyr_down_border(const BlendImage& src, BlendImage& dst);  // within one pixel of a half

}  // namespace biseam
