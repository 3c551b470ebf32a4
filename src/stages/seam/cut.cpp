#include "stages/seam/cut.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "base/heap.hpp"
#include "frame/seam/grid_costs.hpp"
#include "frame/seam/grid_flow.hpp"
#include "stages/seam/graph.hpp"

namespace biseam {

namespace {

// Width of the frame around the strip that the labels do not reach.
constexpr int32_t border = 2;

int32_t* mask_row(BlendImage& mask, int64_t y) {
  return mask.data[0] + static_cast<std::ptrdiff_t>(y) * mask.width * mask.steps[0];
}

bool has_row(const BlendImage& mask, int64_t y) { return mask.width > 0 && y >= 0 && y < mask.height; }

// Columns [first, end) of row y, as far as the mask has them.
void fill_span(BlendImage& mask, int64_t y, int64_t first, int64_t end) {
  if (!has_row(mask, y)) return;
  const int64_t last = std::min<int64_t>(end, mask.width);
  for (int64_t x = std::max<int64_t>(first, 0); x < last; ++x) {
    int32_t* const pixel = mask_row(mask, y) + x * mask.steps[0];
    pixel[0] = pixel[1] = pixel[2] = BISEAM_WEIGHT_ONE;
  }
}

// The left half of a bottom row.  First samples go to the start of the row, one sample apart instead of one pixel: kept,
// because the blended band depends on it.
void fill_bottom_row(BlendImage& mask, int64_t y) {
  if (!has_row(mask, y)) return;
  int32_t* const row = mask_row(mask, y);
  for (int32_t x = 0; x < mask.width / 2; ++x) {
    int32_t* const pixel = row + std::ptrdiff_t{x} * mask.steps[0];
    row[x] = pixel[1] = pixel[2] = BISEAM_WEIGHT_ONE;
  }
}

// What does not depend on the labels.
void fill_surroundings(BlendImage& mask, int32_t height, int64_t offset) {
  for (const int64_t y : {0, 1}) fill_span(mask, y, 0, mask.width / 2);
  for (const int64_t y : {int64_t{height} - 2, int64_t{height} - 1}) fill_bottom_row(mask, y);
  for (int64_t y = 0; y < std::min(height, mask.height); ++y) fill_span(mask, y, 0, offset + border);
}

void fill_source_side(BlendImage& mask, int64_t offset, const Grid& grid) {
  for (int32_t r = border; r < grid.height - border; ++r) {
    for (int32_t c = border; c < grid.width - border; ++c) {
      if (grid.at(int64_t{r} * grid.width + c).sink == 0) fill_span(mask, r, offset + c, offset + c + 1);
    }
  }
}

bool has_labels(const BlendGray& detail) { return detail.width > 2 * border && detail.height > 2 * border; }

// Blocks of a general graph of the strip's size stay within 31 bits: what is larger counts as memory that can't be had.
bool can_be_had(int64_t width, int64_t height) {
  if (width * height > std::numeric_limits<int32_t>::max()) return false;
  const GraphBytes bytes = graph_bytes(width * height, 2 * (2 * width * height - width - height));
  return std::max(bytes.nodes, bytes.arcs) <= std::numeric_limits<int32_t>::max();
}

// Numbers of what a cut needs.
struct Counts {
  explicit Counts(const BlendGray& detail) : width(detail.width), height(detail.height) {}

  int64_t nodes() const { return (height + 2) * width; }
  int64_t floats() const { return height * width + grid_cost_rows * width; }  // terminals and rows of costs
  int64_t places() const { return 2 * height * width + 1; }                   // active nodes and orphans

  int64_t width, height;
};

void fill_by_labels(BlendImage& mask, const BlendGray& detail1, const BlendGray& detail2, int64_t offset, GridNode* nodes,
                    float* floats, uint32_t* places) {
  const int64_t count = int64_t{detail1.height} * detail1.width;
  const Grid grid{nodes, floats, places, places + count + 1, detail1.height, detail1.width};
  fill_grid(grid, detail1.data, detail2.data, border, floats + count);
  solve_grid(grid);
  fill_surroundings(mask, detail1.height, offset);
  fill_source_side(mask, offset, grid);
}

}  // namespace

// Nothing writes a 0: 64s of earlier cuts stay.
Status cut_seam(int offset, BlendImage& mask, const BlendGray& detail1, const BlendGray& detail2) {
  if (detail1.height != detail2.height || detail1.width != detail2.width) return Status::mismatch;
  if (!has_labels(detail1)) {
    fill_surroundings(mask, detail1.height, offset);
    return Status::ok;
  }
  if (!can_be_had(detail1.width, detail1.height)) return Status::no_memory;
  const Counts counts(detail1);
  auto nodes = HeapArray<GridNode>::plain(static_cast<std::size_t>(counts.nodes()));
  auto floats = HeapArray<float>::plain(static_cast<std::size_t>(counts.floats()));
  auto places = HeapArray<uint32_t>::plain(static_cast<std::size_t>(counts.places()));
  if (!nodes || !floats || !places) return Status::no_memory;
  fill_by_labels(mask, detail1, detail2, offset, nodes.data(), floats.data(), places.data());
  return Status::ok;
}

int64_t cut_memory_bytes(const BlendGray& detail) {
  if (!has_labels(detail)) return 0;
  if (!can_be_had(detail.width, detail.height)) return -1;
  const Counts counts(detail);
  return counts.nodes() * int64_t{sizeof(GridNode)} + counts.floats() * int64_t{sizeof(float)} +
         counts.places() * int64_t{sizeof(uint32_t)};
}

void cut_seam_within(int offset, BlendImage& mask, const BlendGray& detail1, const BlendGray& detail2, void* memory) {
  if (!has_labels(detail1)) {
    fill_surroundings(mask, detail1.height, offset);
    return;
  }
  const Counts counts(detail1);
  GridNode* const nodes = static_cast<GridNode*>(memory);
  float* const floats = reinterpret_cast<float*>(nodes + counts.nodes());
  uint32_t* const places = reinterpret_cast<uint32_t*>(floats + counts.floats());
  fill_by_labels(mask, detail1, detail2, offset, nodes, floats, places);
}

}  // namespace biseam
