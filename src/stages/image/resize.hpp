#pragma once

#include "base/status.hpp"
#include "biseam/records.h"

namespace biseam {

// Scales src to dst's size by picking samples; values from 2^24 up come out as their nearest float.  mismatch: channel counts
// differ, dst untouched.  An empty src leaves dst as it is.
Status resize(const BlendImage& src, BlendImage& dst);
Status resize(const BlendGray& src, BlendGray& dst);

}  // namespace biseam
