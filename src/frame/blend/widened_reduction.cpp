#include "frame/blend/widened_reduction.hpp"

#include <cstddef>

#include "base/prefetch.hpp"
#include "stages/blend/widen.hpp"
#include "stages/image/border.hpp"
#include "stages/image/pyr_down_rows.hpp"
#include "stages/image/row_reduction.hpp"

namespace biseam {

namespace {

const int32_t* row_of(const BlendImage& image, int64_t y) { return image.data[0] + static_cast<ptrdiff_t>(y) * image.stride; }

constexpr int kRowsAhead = 4;  // measured: large bands take a third less time

}  // namespace

void reduce_widened(const BlendImage& source, int trans_width, int side, BlendImage& reduced, int32_t* sums) {
  const int width = source.width + trans_width;
  const RowEdges edges = find_edges(width, reduced.width);
  int32_t* const covered = sums + ptrdiff_t{3} * covered_column(trans_width, side);
  for (int y = 0; y < reduced.height; ++y) {
    const int32_t* rows[5];
    for (int k = 0; k < 5; ++k) rows[k] = row_of(source, reflected(int64_t{2} * y + k - 2, source.height));
    // What the next row adds, some rows ahead.
    for (int row = 2 * y + 1 + kRowsAhead; row <= 2 * y + 2 + kRowsAhead && row < source.height; ++row) {
      prefetch(row_of(source, row), ptrdiff_t{3} * source.width * ptrdiff_t{sizeof(int32_t)});
    }
    sum_rows(rows, covered, ptrdiff_t{3} * source.width);
    mirror_edge(sums, width, trans_width, side);
    reduce_row_rounded(sums, reduced.data[0] + ptrdiff_t{y} * reduced.stride, reduced.width, edges);
  }
}

}  // namespace biseam
