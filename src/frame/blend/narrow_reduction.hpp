#pragma once

#include <cstdint>

#include "biseam/records.h"
#include "frame/blend/byte_image.hpp"

namespace biseam {

// Widens a source to level, as bytes, and reduces it, row by row.  The source is widened exactly; with trans_width 0 any packed
// image will do.  False, after a part of it, where a sample is not in 0 .. most, which is 255 at most.  sums: scratch for one
// row of the level.
bool narrow_and_reduce(const BlendImage& source, int trans_width, int side, uint32_t most, const ByteImage& level,
                       const ByteImage& reduced, uint16_t* sums);

// As mirror_edge, for a row of bytes.
void mirror_byte_edge(uint8_t* row, int band_width, int trans_width, int side) noexcept;

// reduced has half the size of level, rounded up.
void reduce_bytes(const ByteImage& level, const ByteImage& reduced, uint16_t* sums);

}  // namespace biseam
