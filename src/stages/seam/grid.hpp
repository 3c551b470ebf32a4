#pragma once

#include <cstdint>

#include "biseam/records.h"

namespace biseam {

inline constexpr float kTie = 100000.0f;      // capacity between a border node and its terminal
inline constexpr float kFrameCost = 1000.0f;  // what an edge in the frame costs on top

// The inside of a grid: its first rows and columns, and the first ones past it.  All others are the frame around it.
struct GridFrame {
  int64_t top, bottom, left, right;

  constexpr bool holds_row(int64_t r) const noexcept { return r < top || r >= bottom; }
  constexpr bool holds_column(int64_t c) const noexcept { return c < left || c >= right; }
};

constexpr GridFrame frame_of(int32_t height, int32_t width, int32_t border) noexcept {
  return {border, int64_t{height} - border, border, int64_t{width} - border};
}

// Capacities between a node and the terminals.  Columns between the borders are tied to both alike, which cancels in the node
// and counts in the flow only.
struct Ties {
  float from_source, to_sink;
};
constexpr Ties ties_at(const GridFrame& frame, int64_t r, int64_t c) noexcept {
  if (frame.holds_row(r)) return {0.0f, 0.0f};
  return {c < frame.right ? kTie : 0.0f, c >= frame.left ? kTie : 0.0f};
}

// (a - b)^2; the difference wraps.
constexpr float squared_difference(int32_t a, int32_t b) noexcept {
  const float d = static_cast<float>(static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b)));
  return d * d;
}

// One end of an edge: the squared differences of three consecutive samples, as if they were the channels of one pixel, and so
// beyond the end of a row into the next.  Seams depend on it.
constexpr float end_cost(float first, float second, float third) noexcept { return first + second + third; }

// An edge outside the frame.
constexpr float edge_cost(float end, float other_end) noexcept { return end + other_end + 1.0f; }

// Appends the 4-connected grid of height x width detail samples (rows without gaps) to an empty graph.  Node r * width + c; the
// border leftmost columns are tied to the source, the border rightmost to the sink.  An edge costs what a and b differ around
// it; border: width of the frame in which edges are dear and, above and below, nodes have no ties.
void build_grid(SeamGraph& graph, const int32_t* a, const int32_t* b, int32_t height, int32_t width, int32_t border);

}  // namespace biseam
