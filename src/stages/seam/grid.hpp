#pragma once

#include <cstdint>

#include "biseam/records.h"

namespace biseam {

inline constexpr float kTie = 100000.0f;      // capacity between a border node and its terminal
inline constexpr float kFrameCost = 1000.0f;  // what an edge in the frame costs on top

// Appends the 4-connected grid of height x width detail samples (rows without gaps) to an empty graph.  Node r * width + c; the
// border leftmost columns are tied to the source, the border rightmost to the sink.  An edge costs what a and b differ around
// it; border: width of the frame in which edges are dear and, above and below, nodes have no ties.
void build_grid(SeamGraph& graph, const int32_t* a, const int32_t* b, int32_t height, int32_t width, int32_t border);

}  // namespace biseam
