#pragma once

#include <cstdint>

#include "biseam/records.h"

namespace biseam {

// cut_seam without a heap, for detail images of one size, by way of a Grid: the general graph takes twice the memory and twice
// the time.  memory: cut_memory_bytes, on a boundary of 32 bytes.
void cut_seam_within(int offset, BlendImage& mask, const BlendGray& detail1, const BlendGray& detail2, void* memory);

// -1: more than can be had.
int64_t cut_memory_bytes(const BlendGray& detail);

}  // namespace biseam
