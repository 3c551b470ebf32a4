#pragma once

#include <cstddef>
#include <cstdint>

// Row kernels of the expansion.  Sums wrap.
namespace biseam {

// A row of width >= 1 pixels to twice as many, scaled by 8: source pixel i feeds pixel 2i with a(i-1) + 6 a(i) + a(i+1) and
// pixel 2i + 1 with 4 (a(i) + a(i+1)).  Pixel -1 counts as pixel 1, pixel width as pixel width - 1; a lone pixel gives 8 a
// twice.
void expand_row(const int32_t* src, int32_t* row, ptrdiff_t width, int channels) noexcept;

// out = (above + 6 row + below + 32) >> 6, rounding toward minus infinity: the output row on a source row, which
// it does not overlap, as no other that is read.
void expand_rows_on(const int32_t* above, const int32_t* row, const int32_t* below, int32_t* out, ptrdiff_t count) noexcept;

// out = (4 (row + below) + 32) >> 6: the output row between two source rows.
void expand_rows_between(const int32_t* row, const int32_t* below, int32_t* out, ptrdiff_t count) noexcept;

}  // namespace biseam
