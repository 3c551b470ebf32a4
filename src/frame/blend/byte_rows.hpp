#pragma once

#include <cstddef>
#include <cstdint>

#include "stages/image/row_reduction.hpp"

// Row kernels of the reduction and the expansion for images of bytes, in pixels of three.  No sum leaves 16 bits.
namespace biseam {

// out = a + 4 b + 6 c + 4 d + e of five rows, which it does not overlap: 16 * 255 at most.
void sum_byte_rows(const uint8_t* const rows[5], uint16_t* out, ptrdiff_t count) noexcept;

// A row of such sums to width reduced pixels, (sum of five pixels + 128) >> 8; edges being those of that width.
void reduce_byte_row(const uint16_t* sums, uint8_t* row, int width, const RowEdges& edges) noexcept;

// expand_row for a row of bytes: width >= 1 pixels to twice as many, 8 * 255 at most.
void expand_byte_row(const uint8_t* src, uint16_t* row, ptrdiff_t width) noexcept;

}  // namespace biseam
