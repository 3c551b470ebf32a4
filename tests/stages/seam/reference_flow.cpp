#include "stages/seam/reference_flow.hpp"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <limits>

namespace biseam::test {

int64_t TestGraph::cut_capacity(const std::vector<bool>& source_side) const {
  int64_t capacity = 0;
  for (const TestEdge& edge : edges) {
    const bool i = source_side[static_cast<size_t>(edge.i)];
    const bool j = source_side[static_cast<size_t>(edge.j)];
    if (i && !j) capacity += edge.capacity;
    if (j && !i) capacity += edge.reverse_capacity;
  }
  for (size_t i = 0; i < terminal.size(); ++i) {
    if (source_side[i] ? terminal[i] < 0 : terminal[i] > 0) capacity += std::abs(terminal[i]);
  }
  return capacity;
}

int64_t dinic_flow(const TestGraph& graph) {
  struct Arc {
    int to;
    int64_t room;
  };
  const int source = graph.node_count;
  const int sink = source + 1;
  std::vector<Arc> arcs;
  std::vector<std::vector<int>> out(static_cast<size_t>(sink) + 1);
  const auto connect = [&](int i, int j, int64_t there, int64_t back) {
    out[static_cast<size_t>(i)].push_back(static_cast<int>(arcs.size()));
    arcs.push_back({j, there});
    out[static_cast<size_t>(j)].push_back(static_cast<int>(arcs.size()));
    arcs.push_back({i, back});
  };
  for (const TestEdge& edge : graph.edges) connect(edge.i, edge.j, edge.capacity, edge.reverse_capacity);
  for (int i = 0; i < graph.node_count; ++i) {
    const int weight = graph.terminal[static_cast<size_t>(i)];
    if (weight > 0) connect(source, i, weight, 0);
    if (weight < 0) connect(i, sink, -weight, 0);
  }
  int64_t flow = 0;
  for (;;) {
    std::vector<int> level(out.size(), -1);
    std::deque<int> queue{source};
    level[static_cast<size_t>(source)] = 0;
    while (!queue.empty()) {
      const auto i = static_cast<size_t>(queue.front());
      queue.pop_front();
      for (const int a : out[i]) {
        const Arc& arc = arcs[static_cast<size_t>(a)];
        if (arc.room > 0 && level[static_cast<size_t>(arc.to)] < 0) {
          level[static_cast<size_t>(arc.to)] = level[i] + 1;
          queue.push_back(arc.to);
        }
      }
    }
    if (level[static_cast<size_t>(sink)] < 0) return flow;
    std::vector<size_t> next(out.size(), 0);
    const std::function<int64_t(int, int64_t)> push = [&](int node, int64_t limit) -> int64_t {
      if (node == sink) return limit;
      const auto i = static_cast<size_t>(node);
      for (; next[i] < out[i].size(); ++next[i]) {
        const auto a = static_cast<size_t>(out[i][next[i]]);
        if (arcs[a].room == 0 || level[static_cast<size_t>(arcs[a].to)] != level[i] + 1) continue;
        const int64_t sent = push(arcs[a].to, std::min(limit, arcs[a].room));
        if (sent == 0) continue;
        arcs[a].room -= sent;
        arcs[a ^ 1].room += sent;
        return sent;
      }
      return 0;
    };
    while (const int64_t sent = push(source, std::numeric_limits<int64_t>::max())) flow += sent;
  }
}

ReferenceTrees::ReferenceTrees(const TestGraph& graph) : nodes_(static_cast<size_t>(graph.node_count)) {
  // Built oldest first, then turned round: a list starts with its newest link.
  for (const TestEdge& edge : graph.edges) {
    const int place_i = static_cast<int>(at(edge.i).links.size());
    const int place_j = static_cast<int>(at(edge.j).links.size()) + (edge.i == edge.j ? 1 : 0);
    at(edge.i).links.push_back({edge.j, place_j, edge.capacity});
    at(edge.j).links.push_back({edge.i, place_i, edge.reverse_capacity});
  }
  for (Node& node : nodes_) {
    for (Link& one : node.links) one.back = static_cast<int>(at(one.to).links.size()) - 1 - one.back;
    std::reverse(node.links.begin(), node.links.end());
  }
  for (int i = 0; i < graph.node_count; ++i) at(i).terminal = graph.terminal[static_cast<size_t>(i)];
}

// The direction of a link in which flow runs from source to sink when the neighbour is the owner's parent (or would be).
ReferenceTrees::Link& ReferenceTrees::downstream(int node, int position, bool neighbour_is_nearer_terminal) {
  const bool outward = at(node).in_sink_tree == neighbour_is_nearer_terminal;
  return outward ? link(node, position) : opposite(node, position);
}

void ReferenceTrees::queue(int node) {
  if (at(node).queued) return;
  at(node).queued = true;
  active_.push_back(node);
}

void ReferenceTrees::become_child(int child, int parent, int link_to_parent) {
  at(child).state = State::child;
  at(child).parent_link = link_to_parent;
  at(child).stamp = at(parent).stamp;
  at(child).distance = at(parent).distance + 1;
}

bool ReferenceTrees::expand(int node, int& source_end, int& position) {
  for (int p = 0; p < static_cast<int>(at(node).links.size()); ++p) {
    if (downstream(node, p, false).room == 0) continue;
    const int other = link(node, p).to;
    const int back = link(node, p).back;
    if (at(other).state == State::free) {
      at(other).in_sink_tree = at(node).in_sink_tree;
      become_child(other, node, back);
      queue(other);
    } else if (at(other).in_sink_tree != at(node).in_sink_tree) {
      source_end = at(node).in_sink_tree ? other : node;
      position = at(node).in_sink_tree ? back : p;
      return true;
    } else if (at(other).distance - at(node).distance >= 2 && at(node).stamp >= at(other).stamp) {
      become_child(other, node, back);
    }
  }
  return false;
}

int64_t ReferenceTrees::room_to_terminal(int node) {
  int64_t room = std::numeric_limits<int64_t>::max();
  while (at(node).state == State::child) {
    room = std::min(room, downstream(node, at(node).parent_link, true).room);
    node = link(node, at(node).parent_link).to;
  }
  return std::min(room, std::abs(at(node).terminal));
}

void ReferenceTrees::drain(int node, int64_t amount) {
  while (at(node).state == State::child) {
    const int position = at(node).parent_link;
    Link& full = downstream(node, position, true);
    Link& other = &full == &link(node, position) ? opposite(node, position) : link(node, position);
    const int parent = link(node, position).to;
    full.room -= amount;
    other.room += amount;
    if (full.room == 0) {
      at(node).state = State::orphan;
      orphans_.push_back(node);
    }
    node = parent;
  }
  at(node).terminal += at(node).in_sink_tree ? amount : -amount;
  if (at(node).terminal == 0) {
    at(node).state = State::orphan;
    orphans_.push_back(node);
  }
}

int64_t ReferenceTrees::send(int source_end, int position) {
  const int sink_end = link(source_end, position).to;
  const int64_t amount = std::min({link(source_end, position).room, room_to_terminal(source_end), room_to_terminal(sink_end)});
  link(source_end, position).room -= amount;
  opposite(source_end, position).room += amount;
  drain(source_end, amount);
  drain(sink_end, amount);
  ++now_;
  return amount;
}

// Length of the way to the terminal, 0 when there is none.
int ReferenceTrees::origin_distance(int node) {
  std::vector<int> way;
  int length = 0;
  for (;; node = link(node, at(node).parent_link).to) {
    if (at(node).stamp == now_) {
      length = at(node).distance;
      break;
    }
    way.push_back(node);
    if (at(node).state == State::root) break;
    if (at(node).state != State::child) return 0;
  }
  for (auto step = way.rbegin(); step != way.rend(); ++step) {
    at(*step).stamp = now_;
    at(*step).distance = ++length;
  }
  return length;
}

void ReferenceTrees::process_orphan(int node) {
  const auto same_tree = [&](int other) {
    return at(other).state != State::free && at(other).in_sink_tree == at(node).in_sink_tree;
  };
  const int count = static_cast<int>(at(node).links.size());
  int best = -1;
  int best_distance = std::numeric_limits<int>::max();
  for (int p = 0; p < count; ++p) {
    if (downstream(node, p, true).room == 0 || !same_tree(link(node, p).to)) continue;
    const int distance = origin_distance(link(node, p).to);
    if (distance > 0 && distance < best_distance) {
      best = p;
      best_distance = distance;
    }
  }
  if (best >= 0) {
    at(node).state = State::child;
    at(node).parent_link = best;
    at(node).stamp = now_;
    at(node).distance = best_distance + 1;
    return;
  }
  at(node).state = State::free;
  at(node).stamp = 0;
  for (int p = 0; p < count; ++p) {
    const int other = link(node, p).to;
    if (!same_tree(other)) continue;
    if (opposite(node, p).room != 0) queue(other);  // the neighbour's own direction, in either tree
    if (at(other).state == State::child && link(other, at(other).parent_link).to == node) {
      at(other).state = State::orphan;
      orphans_.push_back(other);
    }
  }
}

int64_t ReferenceTrees::run() {
  int64_t flow = 0;
  for (int i = 0; i < static_cast<int>(nodes_.size()); ++i) {
    if (at(i).terminal == 0) continue;
    at(i).state = State::root;
    at(i).distance = 1;
    at(i).in_sink_tree = at(i).terminal < 0;
    queue(i);
  }
  while (!active_.empty()) {
    const int node = active_.front();
    int source_end = 0;
    int position = 0;
    if (at(node).state == State::free || !expand(node, source_end, position)) {
      at(node).queued = false;
      active_.pop_front();
      continue;
    }
    flow += send(source_end, position);
    while (!orphans_.empty()) {
      const int orphan = orphans_.back();
      orphans_.pop_back();
      process_orphan(orphan);
    }
  }
  return flow;
}

}  // namespace biseam::test
