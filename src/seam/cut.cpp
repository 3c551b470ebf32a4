#include "seam/cut.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "engine/heap.hpp"
#include "seam/graph.hpp"
#include "seam/grid.hpp"
#include "seam/max_flow.hpp"

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

void fill_source_side(BlendImage& mask, int32_t height, int32_t width, int64_t offset, const SeamGraph& graph) {
  for (int32_t r = border; r < height - border; ++r) {
    for (int32_t c = border; c < width - border; ++c) {
      if (on_source_side(graph, r * width + c)) fill_span(mask, r, offset + c, offset + c + 1);
    }
  }
}

// Labels the strip and fills the mask.  Sizes beyond 31 bits count as memory that can't be had.
Status fill_by_labels(BlendImage& mask, const BlendGray& detail1, const BlendGray& detail2, int64_t offset) {
  const int64_t width = detail1.width;
  const int64_t height = detail1.height;
  if (width * height > std::numeric_limits<int32_t>::max()) return Status::no_memory;
  const int64_t arc_count = 2 * (2 * width * height - width - height);
  const GraphBytes bytes = graph_bytes(width * height, arc_count);
  if (std::max(bytes.nodes, bytes.arcs) > std::numeric_limits<int32_t>::max()) return Status::no_memory;

  auto nodes = HeapArray<GraphNode>::plain(static_cast<std::size_t>(width * height));
  auto arcs = HeapArray<GraphArc>::plain(static_cast<std::size_t>(bytes.arcs) / sizeof(GraphArc));
  auto orphans = HeapArray<int32_t>::plain(static_cast<std::size_t>(arc_count));
  if (!nodes || !arcs || !orphans) return Status::no_memory;

  SeamGraph graph;
  reset_graph(graph, nodes.data(), arcs.data());
  build_grid(graph, detail1.data, detail2.data, detail1.height, detail1.width, border);
  max_flow(graph, orphans.data(), static_cast<int32_t>(arc_count));
  fill_surroundings(mask, detail1.height, offset);
  fill_source_side(mask, detail1.height, detail1.width, offset, graph);
  return Status::ok;
}

}  // namespace

// Nothing writes a 0: 64s of earlier cuts stay.
Status cut_seam(int offset, BlendImage& mask, const BlendGray& detail1, const BlendGray& detail2) {
  if (detail1.height != detail2.height || detail1.width != detail2.width) return Status::mismatch;
  const bool labels_inside = detail1.width > 2 * border && detail1.height > 2 * border;
  if (labels_inside) return fill_by_labels(mask, detail1, detail2, offset);
  fill_surroundings(mask, detail1.height, offset);
  return Status::ok;
}

}  // namespace biseam
