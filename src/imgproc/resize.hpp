#pragma once

#include "biseam/records.h"
#include "engine/status.hpp"

namespace biseam {

// Scales src to dst's size by picking samples.
Status resize(const BlendImage& src, BlendImage& dst);
Status resize(const BlendGray& src, BlendGray& dst);

}  // namespace biseam
