#pragma once

#include "base/status.hpp"
#include "biseam/records.h"

namespace biseam {

// Binomial expansion.  mismatch: sizes or channels do not fit, dst untouched.

// The double where both sizes are doubles, else the border routine.
Status pyr_up(const BlendImage& src, BlendImage& dst);
bool is_double(const BlendImage& src, const BlendImage& dst);

// Exact doubles of three channels.  Sources of less than 2 pixels in a direction leave dst as it is.
Status pyr_up_double(const BlendImage& src, BlendImage& dst);

// Doubles, or one less, of any channel count.  One more is taken as well: the last column or row is repeated.
Status pyr_up_border(const BlendImage& src, BlendImage& dst);

}  // namespace biseam
