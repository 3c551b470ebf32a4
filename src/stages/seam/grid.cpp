#include "stages/seam/grid.hpp"

#include "stages/seam/graph.hpp"

namespace biseam {

namespace {

// What two images differ, their samples taken in one line; those past the last one count as zero.
struct Difference {
  const int32_t* a;
  const int32_t* b;
  int64_t count;

  float squared(int64_t i) const noexcept { return i < count ? squared_difference(a[i], b[i]) : 0.0f; }
  float at(int64_t i) const noexcept { return end_cost(squared(i), squared(i + 1), squared(i + 2)); }
};

void append_nodes(SeamGraph& graph, int32_t height, int32_t width, const GridFrame& frame) {
  for (int32_t r = 0; r < height; ++r) {
    for (int32_t c = 0; c < width; ++c) {
      const Ties ties = ties_at(frame, r, c);
      append_node(graph);
      add_terminal_weights(graph, r * width + c, ties.from_source, ties.to_sink);
    }
  }
}

void add_costly_edge(SeamGraph& graph, int32_t i, int32_t j, float cost, bool in_frame) {
  if (in_frame) cost += kFrameCost;
  add_edge(graph, i, j, cost, cost);
}

}  // namespace

void build_grid(SeamGraph& graph, const int32_t* a, const int32_t* b, int32_t height, int32_t width, int32_t border) {
  const Difference difference{a, b, int64_t{height} * width};
  const GridFrame frame = frame_of(height, width, border);
  append_nodes(graph, height, width, frame);
  for (int32_t r = 0; r < height; ++r) {
    for (int32_t c = 0; c < width; ++c) {
      const int32_t here = r * width + c;
      if (c < width - 1) {
        const float cost = edge_cost(difference.at(here), difference.at(int64_t{here} + 1));
        const bool in_frame = frame.holds_row(r) || frame.holds_column(c) || frame.holds_column(int64_t{c} + 1);
        add_costly_edge(graph, here, here + 1, cost, in_frame);
      }
      if (r < height - 1) {
        const float cost = edge_cost(difference.at(int64_t{here} + width), difference.at(here));
        const bool in_frame = frame.holds_row(r) || frame.holds_row(int64_t{r} + 1) || frame.holds_column(c);
        add_costly_edge(graph, here, here + width, cost, in_frame);
      }
    }
  }
}

}  // namespace biseam
