#pragma once

#include <cstddef>
#include <cstdint>

#include "frame/blend/collapse_rows.hpp"

// Row kernels of a band whose samples are bytes and whose weights are at most 64.
namespace biseam {

// out = the low byte of every sample; largest rises to the largest sample, a negative one counting as more than any other.
void narrow_row(const int32_t* src, uint8_t* out, ptrdiff_t count, uint32_t& largest) noexcept;

// out = count pixels in falling order, from the given one down.  Neither overlaps the other.
void mirror_byte_pixels(const uint8_t* pixel, uint8_t* out, ptrdiff_t count) noexcept;

// Three neighbouring rows that have been expanded horizontally, by expand_byte_row.
struct ExpandedByteRows {
  const uint16_t *above, *row, *below;
};

// What a row of the collapsed image is made of; as CollapseRows.
struct CollapseByteRows {
  ExpandedRows blended;  // wraps
  ExpandedByteRows source1, source2;
  const uint8_t *level1, *level2, *level_mask;
};

// collapse_row_on and collapse_row_between.  But for the blended image no step leaves 16 bits: details lie within 255, their
// difference by a weight within 2 * 255 * 64, and mixed they lie within 255 * 64.
void collapse_byte_row_on(const CollapseByteRows& rows, int32_t* out, ptrdiff_t count) noexcept;
void collapse_byte_row_between(const CollapseByteRows& rows, int32_t* out, ptrdiff_t count) noexcept;

// out = a * mask + b * (64 - mask), the top of a pyramid.
void mix_byte_row(const uint8_t* a, const uint8_t* b, const uint8_t* mask, int32_t* out, ptrdiff_t count) noexcept;

}  // namespace biseam
