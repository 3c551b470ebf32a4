#pragma once

#include <cstdint>

#include "base/status.hpp"
#include "biseam/records.h"

namespace biseam {

// Minimum cut between two detail images; weight 64 goes into the mask on source 1's side.  mismatch: sizes differ.
Status cut_seam(int offset, BlendImage& mask, const BlendGray& detail1, const BlendGray& detail2);

// The same without a heap, for detail images of one size.  memory: cut_memory_bytes, on a boundary of 32 bytes.
void cut_seam_within(int offset, BlendImage& mask, const BlendGray& detail1, const BlendGray& detail2, void* memory);

// -1: more than can be had.
int64_t cut_memory_bytes(const BlendGray& detail);

}  // namespace biseam
