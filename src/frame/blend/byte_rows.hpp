#pragma once

#include <cstddef>
#include <cstdint>

#include "base/variants.hpp"

// Row kernels of the reduction and the expansion for images of bytes, in pixels of three.  No sum leaves 16 bits.
namespace biseam {

// out = a + 4 b + 6 c + 4 d + e of five rows, which it does not overlap: 16 * 255 at most.
using SumByteRows = void(const uint8_t* const rows[5], uint16_t* out, ptrdiff_t count) noexcept;

// Pixel x of the result around source pixel 2x, reduced_from_sum of its five sums, for pixels that have two neighbours on both
// sides.
using ReduceBytePixels = void(const uint16_t* sums, uint8_t* row, ptrdiff_t pixels) noexcept;
ReduceBytePixels reduce_byte_pixels_scalar, reduce_byte_pixels_neon, reduce_byte_pixels_avx2, reduce_byte_pixels_avx512;

// Pixels that have a neighbour on both sides to twice as many.
using ExpandBytePixels = void(const uint8_t* src, uint16_t* row, ptrdiff_t pixels) noexcept;
ExpandBytePixels expand_byte_pixels_scalar, expand_byte_pixels_neon, expand_byte_pixels_avx2, expand_byte_pixels_avx512;

extern const Variants<SumByteRows> kSumByteRows;
extern const Variants<ReduceBytePixels> kReduceBytePixels;
extern const Variants<ExpandBytePixels> kExpandBytePixels;

// Where the outer pixels of a row reduced to its half, rounded up, find their source columns.
struct RowEdges {
  explicit RowEdges(int src_width);

  int32_t first[5], last[5];  // columns of pixel 0, and of pixel inner_end where there is one
  int width, inner_end;       // of the reduced row; pixels 1 .. inner_end - 1 have all five columns inside the row
};

// A whole row of sums to a reduced one.
void reduce_byte_row(const uint16_t* sums, uint8_t* row, const RowEdges& edges) noexcept;

// expand_row for a row of bytes: width >= 1 pixels to twice as many, 8 * 255 at most.
void expand_byte_row(const uint8_t* src, uint16_t* row, ptrdiff_t width) noexcept;

}  // namespace biseam
