#pragma once

#include <cstdint>

#include "biseam/records.h"
#include "frame/blend/byte_image.hpp"

namespace biseam {

// As mirror_edge, for a row of bytes.
void mirror_byte_edge(uint8_t* row, int band_width, int trans_width, int side) noexcept;

// reduced has half the size of level, rounded up.  sums: scratch for one row of the level.
void reduce_level(const ByteImage& level, const ByteImage& reduced, uint16_t* sums);

// Copies a packed image to level, as bytes, and reduces it, row by row.  False, after a part of it, where a sample is not in
// 0 .. most, which is 255 at most.
bool narrow_and_reduce(const BlendImage& image, uint32_t most, const ByteImage& level, const ByteImage& reduced,
                       uint16_t* sums);

}  // namespace biseam
