#pragma once

#include <cstdint>

#include "base/status.hpp"
#include "biseam/records.h"

namespace biseam {

// Whether all blocks of the graph of detail images of that size stay within 31 bits.  What is larger counts as memory that
// can't be had.
bool graph_can_be_had(int64_t width, int64_t height);

// Minimum cut between two detail images; weight 64 goes into the mask on source 1's side.  mismatch: sizes differ.
Status cut_seam(int offset, BlendImage& mask, const BlendGray& detail1, const BlendGray& detail2);

}  // namespace biseam
