#pragma once

#include "biseam/records.h"
#include "engine/status.hpp"

namespace biseam {

// Binomial expansion.  mismatch: sizes or channels do not fit, dst untouched.
Status pyr_up(const BlendImage& src, BlendImage& dst);
Status pyr_up_double(const BlendImage& src, BlendImage& dst);  // exact doubles
Status pyr_up_border(const BlendImage& src, BlendImage& dst);  // one less than a double, any channel count

}  // namespace biseam
