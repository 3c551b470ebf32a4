#include "stages/seam/max_flow.hpp"

#include <algorithm>
#include <cmath>

#include "stages/seam/graph.hpp"

namespace biseam {

namespace {

struct Search {
  GraphNode* nodes;
  GraphArc* arcs;
  int32_t* orphans;
  int32_t orphan_count = 0;
  int32_t first_active = 0;  // 1 + index, 0: none
  int32_t last_active = 0;
  int32_t time = 0;  // augmentations so far
};

void append_active(Search& search, int32_t i) noexcept {
  GraphNode& node = search.nodes[i];
  if (node.next_active != 0) return;
  const int32_t link = i + 1;
  if (search.first_active == 0)
    search.first_active = link;
  else
    search.nodes[search.last_active - 1].next_active = link;
  node.next_active = link;
  search.last_active = link;
}

void remove_first_active(Search& search) noexcept {
  GraphNode& node = search.nodes[search.first_active - 1];
  const bool last = node.next_active == search.first_active;
  search.first_active = last ? 0 : node.next_active;
  node.next_active = 0;
}

void push_orphan(Search& search, int32_t i) noexcept {
  search.nodes[i].parent = kParentOrphan;
  search.orphans[search.orphan_count++] = i;
}

// Of the pair that joins a node to its parent or child, the direction in which flow runs towards the sink: in the source tree
// away from the root, in the sink tree to it.
int32_t downstream_arc(const GraphNode& node, int32_t to_parent) noexcept { return node.sink != 0 ? to_parent : to_parent ^ 1; }

void plant_roots(Search& search, int32_t node_count) noexcept {
  for (int32_t i = 0; i < node_count; ++i) {
    GraphNode& node = search.nodes[i];
    node.next_active = 0;
    node.time_stamp = 0;
    node.parent = kParentNone;
    if (node.terminal_capacity == 0.0f) continue;
    node.parent = kParentTerminal;
    node.distance = 1;
    node.sink = node.terminal_capacity < 0.0f;
    append_active(search, i);
  }
}

void hang(GraphNode& child, const GraphNode& parent, int32_t arc_to_parent) noexcept {
  child.parent = arc_to_parent;
  child.time_stamp = parent.time_stamp;
  child.distance = parent.distance + 1;
}

// Takes in the free neighbours of node i.  Returns the arc, towards the sink, that bridges to the other tree, or 0.
int32_t grow(Search& search, int32_t i) noexcept {
  const GraphNode& node = search.nodes[i];
  for (int32_t a = node.first_arc; a != 0; a = search.arcs[a].next) {
    const int32_t towards_sink = node.sink != 0 ? a ^ 1 : a;
    if (search.arcs[towards_sink].residual == 0.0f) continue;
    const int32_t j = search.arcs[a].head;
    GraphNode& other = search.nodes[j];
    if (other.parent == kParentNone) {
      other.sink = node.sink;
      hang(other, node, a ^ 1);
      append_active(search, j);
    } else if (other.sink != node.sink) {
      return towards_sink;
    } else if (other.distance > node.distance + 1 && other.time_stamp <= node.time_stamp) {
      // Only a gain of two or more re-hangs (a plain comparison of distances would do for the flow): labels depend on it.
      hang(other, node, a ^ 1);
    }
  }
  return 0;
}

// The least of limit and what fits between node i and its terminal.
float path_limit(const Search& search, int32_t i, float limit) noexcept {
  int32_t to_parent = search.nodes[i].parent;
  while (to_parent > 0) {
    limit = std::min(limit, search.arcs[downstream_arc(search.nodes[i], to_parent)].residual);
    i = search.arcs[to_parent].head;
    to_parent = search.nodes[i].parent;
  }
  return std::min(limit, std::fabs(search.nodes[i].terminal_capacity));
}

// Sends amount between node i and its terminal; nodes cut off by it become orphans.
void push_path(Search& search, int32_t i, float amount) noexcept {
  int32_t to_parent = search.nodes[i].parent;
  while (to_parent > 0) {
    const int32_t arc = downstream_arc(search.nodes[i], to_parent);
    search.arcs[arc].residual -= amount;
    search.arcs[arc ^ 1].residual += amount;
    if (search.arcs[arc].residual == 0.0f) push_orphan(search, i);
    i = search.arcs[to_parent].head;
    to_parent = search.nodes[i].parent;
  }
  GraphNode& root = search.nodes[i];
  root.terminal_capacity += root.sink != 0 ? amount : -amount;
  if (root.terminal_capacity == 0.0f) push_orphan(search, i);
}

// Returns the flow sent through the bridge.
float augment(Search& search, int32_t bridge) noexcept {
  const int32_t source_end = search.arcs[bridge ^ 1].head;
  const int32_t sink_end = search.arcs[bridge].head;
  float amount = path_limit(search, source_end, search.arcs[bridge].residual);
  amount = path_limit(search, sink_end, amount);
  search.arcs[bridge].residual -= amount;
  search.arcs[bridge ^ 1].residual += amount;
  push_path(search, source_end, amount);
  push_path(search, sink_end, amount);
  ++search.time;
  return amount;
}

// Links from node j to its terminal, the one of the root included; 0 when the way up ends at an orphan.  Stamps the root.
int32_t terminal_distance(Search& search, int32_t j) noexcept {
  for (int32_t links = 0;; ++links) {
    GraphNode& node = search.nodes[j];
    if (node.time_stamp == search.time) return links + node.distance;
    if (node.parent == kParentTerminal) {
      node.time_stamp = search.time;
      node.distance = 1;
      return links + 1;
    }
    if (node.parent <= 0) return 0;
    j = search.arcs[node.parent].head;
  }
}

// Records the distances just found on the way up from node j.
void stamp_path(Search& search, int32_t j, int32_t distance) noexcept {
  while (search.nodes[j].time_stamp != search.time) {
    GraphNode& node = search.nodes[j];
    node.time_stamp = search.time;
    node.distance = distance--;
    j = search.arcs[node.parent].head;
  }
}

// Gives up on orphan i: its neighbours may take it in later, its children become orphans.
void set_free(Search& search, int32_t i) noexcept {
  GraphNode& node = search.nodes[i];
  node.time_stamp = 0;
  node.parent = kParentNone;
  for (int32_t a = node.first_arc; a != 0; a = search.arcs[a].next) {
    const int32_t j = search.arcs[a].head;
    const GraphNode& other = search.nodes[j];
    if (other.sink != node.sink || other.parent == kParentNone) continue;
    // The arc from j to i decides in the sink tree too, where flow would run the other way: labels depend on it.
    if (search.arcs[a ^ 1].residual != 0.0f) append_active(search, j);
    if (other.parent > 0 && search.arcs[other.parent].head == i) push_orphan(search, j);
  }
}

// Hangs orphan i under the neighbour nearest to the terminal, the earliest in its list among equals, or sets it free.
void adopt(Search& search, int32_t i) noexcept {
  GraphNode& node = search.nodes[i];
  int32_t best_arc = 0;
  int32_t best_distance = 0;
  for (int32_t a = node.first_arc; a != 0; a = search.arcs[a].next) {
    if (search.arcs[downstream_arc(node, a)].residual == 0.0f) continue;
    const int32_t j = search.arcs[a].head;
    const GraphNode& other = search.nodes[j];
    if (other.sink != node.sink || other.parent == kParentNone) continue;
    const int32_t distance = terminal_distance(search, j);
    if (distance == 0) continue;
    if (best_arc == 0 || distance < best_distance) {
      best_arc = a;
      best_distance = distance;
    }
    stamp_path(search, j, distance);
  }
  if (best_arc == 0) {
    set_free(search, i);
    return;
  }
  node.parent = best_arc;
  node.time_stamp = search.time;
  node.distance = best_distance + 1;
}

}  // namespace

float max_flow(SeamGraph& graph, int32_t* orphan_stack, int32_t stack_size) {
  // An orphan has arcs and is on the stack once at most.
  if (stack_size < std::min(graph.node_count, graph.arc_count - kReservedArcs)) return graph.flow;
  Search search{graph.nodes, graph.arcs, orphan_stack};
  plant_roots(search, graph.node_count);
  while (search.first_active != 0) {
    const int32_t i = search.first_active - 1;
    const int32_t bridge = search.nodes[i].parent == kParentNone ? 0 : grow(search, i);
    if (bridge == 0) {
      remove_first_active(search);
      continue;
    }
    graph.flow += augment(search, bridge);
    while (search.orphan_count > 0) adopt(search, search.orphans[--search.orphan_count]);
  }
  return graph.flow;
}

}  // namespace biseam
