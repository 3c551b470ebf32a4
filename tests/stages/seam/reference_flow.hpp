#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

namespace biseam::test {

struct TestEdge {
  int i, j;
  int capacity, reverse_capacity;
};

// A graph in small integers, which are exact in single precision.
struct TestGraph {
  int node_count = 0;
  std::vector<TestEdge> edges;
  std::vector<int> terminal;  // > 0: from the source, < 0: to the sink

  // Capacity from the nodes marked as source's to the others, terminals included.
  int64_t cut_capacity(const std::vector<bool>& source_side) const;
};

// The value of the maximum flow by Dinic's method.
int64_t dinic_flow(const TestGraph& graph);

// The two-tree search once more, on neighbour lists and with queues of the standard library, in the order that decides which
// cut is found.  Labels: the side each node was last on, and whether it ended in a tree.
class ReferenceTrees {
 public:
  explicit ReferenceTrees(const TestGraph& graph);
  int64_t run();
  bool on_source_side(int node) const { return !nodes_[static_cast<std::size_t>(node)].in_sink_tree; }
  bool is_free(int node) const { return nodes_[static_cast<std::size_t>(node)].state == State::free; }

 private:
  enum class State { free, root, child, orphan };
  struct Link {  // one direction of an edge, from its owner to a neighbour
    int to;
    int back;  // position of the opposite link in the neighbour's list
    int64_t room;
  };
  struct Node {
    std::vector<Link> links;  // newest first
    State state = State::free;
    int parent_link = -1;
    bool in_sink_tree = false;
    bool queued = false;
    int64_t stamp = 0;
    int distance = 0;
    int64_t terminal = 0;
  };

  Node& at(int node) { return nodes_[static_cast<std::size_t>(node)]; }
  Link& link(int node, int position) { return at(node).links[static_cast<std::size_t>(position)]; }
  Link& opposite(int node, int position) { return link(link(node, position).to, link(node, position).back); }
  Link& downstream(int node, int position, bool neighbour_is_nearer_terminal);
  void queue(int node);
  void become_child(int child, int parent, int link_to_parent);
  bool expand(int node, int& source_end, int& position);
  int64_t send(int source_end, int position);
  void drain(int node, int64_t amount);
  int64_t room_to_terminal(int node);
  int origin_distance(int node);
  void process_orphan(int node);

  std::vector<Node> nodes_;
  std::deque<int> active_;
  std::vector<int> orphans_;
  int64_t now_ = 0;
};

}  // namespace biseam::test
