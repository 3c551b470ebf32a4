#pragma once

#include <cstdint>

// Whole rows of the reduction, borders included.
namespace biseam {

// Where the outer pixels of a reduced row find their source columns.
struct RowEdges {
  int32_t left[5];   // of pixel 0
  int32_t right[7];  // of pixel inner_end + j: right[j] .. right[j + 4]; j is 0, or 1 one pixel past an exact half
  int inner_end;     // pixels 1 .. inner_end - 1 have all five columns inside the row
};

// dst_width: within one pixel of half the source's.
RowEdges find_edges(int src_width, int dst_width);

// A source row to width pixels of binomial sums, edges being those of that width.
void reduce_row(const int32_t* src, int32_t* row, int width, const RowEdges& edges) noexcept;

// A row of sums of five source rows to width pixels of the result.
void reduce_row_rounded(const int32_t* sums, int32_t* row, int width, const RowEdges& edges) noexcept;

}  // namespace biseam
