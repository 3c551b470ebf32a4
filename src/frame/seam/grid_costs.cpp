#include "frame/seam/grid_costs.hpp"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>

#include "frame/seam/cost_rows.hpp"
#include "stages/seam/grid.hpp"

namespace biseam {

namespace {

// Of one row of nodes: differences around each, costs of the edges to the right and down, and those of the row above.
struct Rows {
  float *differences, *differences_below;
  float *right, *down, *down_above;
};

// Samples past the last one of the image count as zero and are not read.
void add_up_differences(const int32_t* a, const int32_t* b, int64_t start, int64_t width, int64_t sample_count, float* sums) {
  const int64_t whole = std::clamp<int64_t>(sample_count - start - 2, 0, width);
  kDifferenceRow.best()(a + start, b + start, sums, static_cast<ptrdiff_t>(whole));
  for (int64_t i = whole; i < width; ++i) {
    int32_t ends[2][3] = {};
    const int64_t left = std::min<int64_t>(sample_count - start - i, 3);
    std::memcpy(ends[0], a + start + i, static_cast<size_t>(left) * sizeof(int32_t));
    std::memcpy(ends[1], b + start + i, static_cast<size_t>(left) * sizeof(int32_t));
    kDifferenceRow.scalar(ends[0], ends[1], sums + i, 1);
  }
}

// In rows of the frame all edges are dear, in others those at columns before left and from right on.
void add_frame_costs(float* costs, int32_t count, bool row_in_frame, int64_t left, int64_t right) {
  const int64_t first_end = row_in_frame ? count : std::clamp<int64_t>(left, 0, count);
  for (int64_t c = 0; c < first_end; ++c) costs[c] += kFrameCost;
  for (int64_t c = std::max(first_end, right); c < count; ++c) costs[c] += kFrameCost;
}

void store_row(GridNode* nodes, const Rows& rows, int32_t width) {
  for (int32_t c = 0; c < width; ++c) {
    nodes[c] = GridNode{};
    nodes[c].room[kDown] = rows.down[c];
    nodes[c].room[kRight] = rows.right[c];
    nodes[c].room[kLeft] = c > 0 ? rows.right[c - 1] : 0.0f;
    nodes[c].room[kUp] = rows.down_above[c];
  }
}

void fill_terminals(float* terminals, int32_t width, const GridFrame& frame, int32_t r) {
  for (int32_t c = 0; c < width; ++c) {
    const Ties ties = ties_at(frame, r, c);
    terminals[c] = ties.from_source - ties.to_sink;
  }
}

}  // namespace

void fill_grid(const Grid& grid, const int32_t* a, const int32_t* b, int32_t border, float* memory) noexcept {
  const int32_t width = grid.width, height = grid.height;
  const int64_t count = int64_t{height} * width;
  const GridFrame frame = frame_of(height, width, border);
  Rows rows{memory, memory + width, memory + 2 * ptrdiff_t{width}, memory + 3 * ptrdiff_t{width},
            memory + 4 * ptrdiff_t{width}};
  std::fill_n(grid.nodes, width, GridNode{});
  std::fill_n(&grid.at(count), width, GridNode{});
  std::fill_n(rows.down_above, width, 0.0f);
  add_up_differences(a, b, 0, width, count, rows.differences);
  for (int32_t r = 0; r < height; ++r) {
    const bool in_frame = frame.holds_row(r);
    kCostRow.best()(rows.differences, rows.differences + 1, rows.right, width - 1);
    add_frame_costs(rows.right, width - 1, in_frame, frame.left, frame.right - 1);
    rows.right[width - 1] = 0.0f;
    if (r + 1 < height) {
      add_up_differences(a, b, (int64_t{r} + 1) * width, width, count, rows.differences_below);
      kCostRow.best()(rows.differences_below, rows.differences, rows.down, width);
      add_frame_costs(rows.down, width, in_frame || frame.holds_row(int64_t{r} + 1), frame.left, frame.right);
    } else {
      std::fill_n(rows.down, width, 0.0f);
    }
    store_row(&grid.at(int64_t{r} * width), rows, width);
    fill_terminals(grid.terminals + int64_t{r} * width, width, frame, r);
    std::swap(rows.down, rows.down_above);
    std::swap(rows.differences, rows.differences_below);
  }
}

}  // namespace biseam
