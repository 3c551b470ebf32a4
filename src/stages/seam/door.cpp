// The exported functions of the seam search.
#include <limits>

#include "biseam/biseam.h"
#include "stages/seam/cut.hpp"
#include "stages/seam/detail.hpp"
#include "stages/seam/graph.hpp"
#include "stages/seam/grid.hpp"
#include "stages/seam/max_flow.hpp"
#include "stages/seam/path.hpp"
#include "stages/seam/smooth.hpp"

namespace {

// A size that needs more than 31 bits is -1, which no allocator grants.
int32_t block_size(int64_t bytes) { return bytes > std::numeric_limits<int32_t>::max() ? -1 : static_cast<int32_t>(bytes); }

}  // namespace

void CvtColorToGray(BlendImage* src, BlendGray* dst) { biseam::to_gray(*src, *dst); }

void CreatGaussKernal(float sigma, float** kernel, int32_t* taps) { biseam::fill_flat_kernel(sigma, *kernel, *taps); }

void GaussianSmooth(BlendGray* src, BlendGray* dst, float sigma, int32_t taps) {
  biseam::smooth(*src, *dst, sigma, taps, biseam::print_missing_memory);
}

int32_t SubGrayImage(BlendGray* a, BlendGray* b, BlendGray* out) {
  return biseam::code_of(biseam::subtract_gray(*a, *b, *out));
}

void GaussFilter(BlendGray* src, BlendGray* dst) { biseam::extract_detail(*src, *dst, biseam::print_missing_memory); }

void CalcMem(int32_t nodes, int32_t arcs, int32_t* node_bytes, int32_t* arc_bytes, int32_t* orphan_bytes) {
  const biseam::GraphBytes bytes = biseam::graph_bytes(nodes, arcs);
  *node_bytes = block_size(bytes.nodes);
  *arc_bytes = block_size(bytes.arcs);
  *orphan_bytes = block_size(bytes.orphans);
}

void Config(void* node_block, void* arc_block, SeamGraph* graph) {
  biseam::reset_graph(*graph, static_cast<GraphNode*>(node_block), static_cast<GraphArc*>(arc_block));
}

void AddEdge(int32_t i, int32_t j, float capacity, float reverse_capacity, SeamGraph* graph) {
  biseam::add_edge(*graph, i, j, capacity, reverse_capacity);
}

void AddTermWeights(int32_t node, float source_capacity, float sink_capacity, SeamGraph* graph) {
  biseam::add_terminal_weights(*graph, node, source_capacity, sink_capacity);
}

void GCSetGraphWeightsColor2(const int32_t* a, const int32_t* b, int32_t height, int32_t width, int32_t border,
                             SeamGraph* graph) {
  biseam::build_grid(*graph, a, b, height, width, border);
}

float MaxFlow(int32_t arc_count, void* orphan_stack, SeamGraph* graph) {
  return biseam::max_flow(*graph, static_cast<int32_t*>(orphan_stack), arc_count);
}

int32_t InSourceSegment(int32_t node, SeamGraph* graph) { return biseam::on_source_side(*graph, node) ? 1 : 0; }

// Failed memory is -1 too: the mask is then as it was, as with mismatched sizes.
int32_t GraphCut(int32_t offset, BlendImage* mask, BlendGray* detail1, BlendGray* detail2) {
  return biseam::code_of(biseam::cut_seam(offset, *mask, *detail1, *detail2));
}

void CreatFindPath(BlendImage* source, BlendImage* strip, int32_t findpath_width, int32_t trans_width, int32_t side) {
  biseam::copy_strip(*source, *strip, findpath_width, trans_width, side);
}

void CreatMask(BlendImage* mask) { biseam::fill_left_half(*mask); }
