#include "stages/seam/grid.hpp"

#include "stages/seam/graph.hpp"

namespace biseam {

namespace {

// a - b over all samples of the two images, in one line; samples past the last one count as zero.
struct Difference {
  const int32_t* a;
  const int32_t* b;
  int64_t count;

  float squared(int64_t i) const noexcept {
    if (i >= count) return 0.0f;
    const float d = static_cast<float>(static_cast<int32_t>(static_cast<uint32_t>(a[i]) - static_cast<uint32_t>(b[i])));
    return d * d;
  }

  // One end of an edge: three consecutive samples, as if they were the channels of one pixel, and so beyond the end of a row
  // into the next.  Seams depend on it.
  float at(int64_t i) const noexcept { return squared(i) + squared(i + 1) + squared(i + 2); }
};

struct Frame {
  int64_t top, bottom, left, right;  // first rows and columns inside, first ones past the inside

  bool holds_row(int64_t r) const noexcept { return r < top || r >= bottom; }
  bool holds_column(int64_t c) const noexcept { return c < left || c >= right; }
};

// Columns between the borders are tied to both terminals alike: it cancels in the node and counts in the flow.
void append_nodes(SeamGraph& graph, int32_t height, int32_t width, const Frame& frame) {
  for (int32_t r = 0; r < height; ++r) {
    for (int32_t c = 0; c < width; ++c) {
      const bool tied = !frame.holds_row(r);
      append_node(graph);
      add_terminal_weights(graph, r * width + c, tied && c < frame.right ? kTie : 0.0f, tied && c >= frame.left ? kTie : 0.0f);
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
  const Frame frame{border, int64_t{height} - border, border, int64_t{width} - border};
  append_nodes(graph, height, width, frame);
  for (int32_t r = 0; r < height; ++r) {
    for (int32_t c = 0; c < width; ++c) {
      const int32_t here = r * width + c;
      if (c < width - 1) {
        const float cost = difference.at(here) + difference.at(int64_t{here} + 1) + 1.0f;
        const bool in_frame = frame.holds_row(r) || frame.holds_column(c) || frame.holds_column(int64_t{c} + 1);
        add_costly_edge(graph, here, here + 1, cost, in_frame);
      }
      if (r < height - 1) {
        const float cost = difference.at(int64_t{here} + width) + difference.at(here) + 1.0f;
        const bool in_frame = frame.holds_row(r) || frame.holds_row(int64_t{r} + 1) || frame.holds_column(c);
        add_costly_edge(graph, here, here + width, cost, in_frame);
      }
    }
  }
}

}  // namespace biseam
