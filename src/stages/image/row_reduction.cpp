#include "stages/image/row_reduction.hpp"

#include <algorithm>
#include <cstddef>

#include "stages/image/border.hpp"
#include "stages/image/pyr_down_rows.hpp"

namespace biseam {

namespace {

// Calls at_columns(columns, x) for the outer pixels.
template <class AtColumns>
void for_outer_pixels(int width, const RowEdges& edges, AtColumns at_columns) {
  at_columns(edges.left, 0);
  for (int x = std::max(edges.inner_end, 1); x < width; ++x) at_columns(edges.right + (x - edges.inner_end), x);
}

}  // namespace

RowEdges find_edges(int src_width, int dst_width) {
  RowEdges edges;
  edges.inner_end = std::min((src_width - 3) / 2 + 1, dst_width);
  for (int i = 0; i < 5; ++i) edges.left[i] = reflected(i - 2, src_width);
  for (int i = 0; i < 7; ++i) edges.right[i] = reflected(i - 2 + int64_t{2} * edges.inner_end, src_width);
  return edges;
}

void reduce_row(const int32_t* src, int32_t* row, int width, const RowEdges& edges) noexcept {
  if (width < 1) return;
  reduce_pixels(src + 6, row + 3, edges.inner_end - 1);
  for_outer_pixels(width, edges, [&](const int32_t* columns, int x) { reduce_pixel_at(src, columns, row + ptrdiff_t{3} * x); });
}

void reduce_row_rounded(const int32_t* sums, int32_t* row, int width, const RowEdges& edges) noexcept {
  if (width < 1) return;
  reduce_pixels_rounded(sums + 6, row + 3, edges.inner_end - 1);
  for_outer_pixels(width, edges, [&](const int32_t* columns, int x) {
    int32_t* const pixel = row + ptrdiff_t{3} * x;
    reduce_pixel_at(sums, columns, pixel);
    for (int k = 0; k < 3; ++k) pixel[k] = reduced_from_sum(pixel[k]);
  });
}

}  // namespace biseam
