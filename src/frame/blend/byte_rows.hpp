#pragma once

#include <cstddef>
#include <cstdint>

// Row kernels of the reduction and the expansion for images of bytes, in pixels of three.  No sum leaves 16 bits.
namespace biseam {

// out = a + 4 b + 6 c + 4 d + e of five rows, which it does not overlap: 16 * 255 at most.
void sum_byte_rows(const uint8_t* const rows[5], uint16_t* out, ptrdiff_t count) noexcept;

// Where the outer pixels of a row reduced to its half, rounded up, find their source columns.
struct RowEdges {
  explicit RowEdges(int src_width);

  int32_t first[5], last[5];  // columns of pixel 0, and of pixel inner_end where there is one
  int width, inner_end;       // of the reduced row; pixels 1 .. inner_end - 1 have all five columns inside the row
};

// A row of such sums to a reduced one: five pixels each, reduced_from_sum.
void reduce_byte_row(const uint16_t* sums, uint8_t* row, const RowEdges& edges) noexcept;

// expand_row for a row of bytes: width >= 1 pixels to twice as many, 8 * 255 at most.
void expand_byte_row(const uint8_t* src, uint16_t* row, ptrdiff_t width) noexcept;

}  // namespace biseam
