#pragma once

#include "biseam/records.h"
#include "engine/status.hpp"

namespace biseam {

// Minimum cut between two detail images; weight 64 goes into the mask on source 1's side.  mismatch: sizes differ.
Status cut_seam(int offset, BlendImage& mask, const BlendGray& detail1, const BlendGray& detail2);

}  // namespace biseam
