#pragma once

#include <cstdint>

#include "biseam/records.h"

namespace biseam {

// Values of GraphNode::parent that are no arc.
enum : int32_t { kParentNone = 0, kParentTerminal = -1, kParentOrphan = -2 };

// Arcs before the first pair, so that index 0 can mean none.
inline constexpr int kReservedArcs = 2;

// Bytes of the blocks behind a graph; m arcs are m / 2 edges, the reserved ones come on top.
struct GraphBytes {
  int64_t nodes, arcs, orphans;
};
GraphBytes graph_bytes(int64_t nodes, int64_t arcs);

// An empty graph over two blocks that stay the caller's.
void reset_graph(SeamGraph& graph, GraphNode* nodes, GraphArc* arcs);

// The new node has the next free index and no ties.
void append_node(SeamGraph& graph);

// Adds the pair i -> j, j -> i.  The newest arc of a node comes first in its list.
void add_edge(SeamGraph& graph, int32_t i, int32_t j, float capacity, float reverse_capacity);

// Ties a node to the terminals.  What can flow straight through from source to sink is counted at once.
void add_terminal_weights(SeamGraph& graph, int32_t node, float source_capacity, float sink_capacity);

// Nodes outside both trees keep the side they were last on, and were never on the sink's to begin with.  So sides can cost more
// than the flow; they are a minimum cut when no node ends outside.
bool on_source_side(const SeamGraph& graph, int32_t node);

}  // namespace biseam
