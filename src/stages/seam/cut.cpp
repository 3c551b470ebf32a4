#include "stages/seam/cut.hpp"

#include <algorithm>
#include <cstddef>
#include <limits>

#include "base/heap.hpp"
#include "stages/seam/graph.hpp"
#include "stages/seam/grid.hpp"
#include "stages/seam/max_flow.hpp"
#include "stages/seam/seam_mask.hpp"

namespace biseam {

namespace {

// Arcs of a 4-connected grid: two for every edge.
constexpr int64_t arc_count(int64_t width, int64_t height) { return 2 * (2 * width * height - width - height); }

}  // namespace

bool graph_can_be_had(int64_t width, int64_t height) {
  constexpr int64_t kMost = std::numeric_limits<int32_t>::max();
  if (width * height > kMost) return false;
  const GraphBytes bytes = graph_bytes(width * height, arc_count(width, height));
  return std::max({bytes.nodes, bytes.arcs, bytes.orphans}) <= kMost;
}

Status cut_seam(int offset, BlendImage& mask, const BlendGray& detail1, const BlendGray& detail2) {
  const int32_t width = detail1.width, height = detail1.height;
  if (height != detail2.height || width != detail2.width) return Status::mismatch;
  if (!has_labels(width, height)) {
    fill_surroundings(mask, height, offset);
    return Status::ok;
  }
  if (!graph_can_be_had(width, height)) return Status::no_memory;
  const int64_t arcs = arc_count(width, height);
  auto nodes = HeapArray<GraphNode>::plain(static_cast<size_t>(width) * static_cast<size_t>(height));
  auto arc_block = HeapArray<GraphArc>::plain(static_cast<size_t>(arcs) + kReservedArcs);
  auto orphans = HeapArray<int32_t>::plain(static_cast<size_t>(arcs));
  if (!nodes || !arc_block || !orphans) return Status::no_memory;

  SeamGraph graph;
  reset_graph(graph, nodes.data(), arc_block.data());
  build_grid(graph, detail1.data, detail2.data, height, width, kSeamBorder);
  max_flow(graph, orphans.data(), static_cast<int32_t>(arcs));
  fill_surroundings(mask, height, offset);
  fill_source_side(mask, height, width, offset, [&](int32_t r, int32_t c) { return on_source_side(graph, r * width + c); });
  return Status::ok;
}

}  // namespace biseam
