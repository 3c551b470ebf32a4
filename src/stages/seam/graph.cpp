#include "stages/seam/graph.hpp"

#include <algorithm>

namespace biseam {

GraphBytes graph_bytes(int64_t nodes, int64_t arcs) {
  return {nodes * int64_t{sizeof(GraphNode)}, (arcs + kReservedArcs) * int64_t{sizeof(GraphArc)},
          arcs * int64_t{sizeof(int32_t)}};
}

void reset_graph(SeamGraph& graph, GraphNode* nodes, GraphArc* arcs) { graph = SeamGraph{nodes, 0, arcs, 0, 0.0f}; }

void append_node(SeamGraph& graph) { graph.nodes[graph.node_count++] = GraphNode{}; }

void add_edge(SeamGraph& graph, int32_t i, int32_t j, float capacity, float reverse_capacity) {
  if (graph.arc_count == 0) {
    graph.arcs[0] = graph.arcs[1] = GraphArc{};
    graph.arc_count = kReservedArcs;
  }
  const int32_t arc = graph.arc_count;
  graph.arcs[arc] = {j, graph.nodes[i].first_arc, capacity};
  graph.nodes[i].first_arc = arc;
  graph.arcs[arc + 1] = {i, graph.nodes[j].first_arc, reverse_capacity};
  graph.nodes[j].first_arc = arc + 1;
  graph.arc_count += 2;
}

void add_terminal_weights(SeamGraph& graph, int32_t node, float source_capacity, float sink_capacity) {
  const float before = graph.nodes[node].terminal_capacity;
  if (before > 0.0f)
    source_capacity += before;
  else
    sink_capacity -= before;
  graph.flow += std::min(source_capacity, sink_capacity);
  graph.nodes[node].terminal_capacity = source_capacity - sink_capacity;
}

bool on_source_side(const SeamGraph& graph, int32_t node) { return graph.nodes[node].sink == 0; }

}  // namespace biseam
