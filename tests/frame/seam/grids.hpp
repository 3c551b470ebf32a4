#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

#include "frame/seam/grid_flow.hpp"
#include "stages/seam/graph.hpp"
#include "stages/seam/max_flow.hpp"
#include "support/guarded_block.hpp"

// One grid twice: as a general graph and as a Grid.
namespace biseam::test {

// A general graph of a grid and what its cut needs.
struct GeneralGrid {
  GeneralGrid(int width_, int height_)
      : width(width_),
        height(height_),
        nodes(static_cast<size_t>(width) * static_cast<size_t>(height)),
        arcs(4 * nodes.size() + 2),
        orphans(nodes.size()) {
    reset_graph(graph, nodes.data(), arcs.data());
  }

  template <class Cost>
  void connect(Cost cost) {
    for (int r = 0; r < height; ++r) {
      for (int c = 0; c < width; ++c) {
        const int here = r * width + c;
        if (c < width - 1) connect_two(here, here + 1, cost);
        if (r < height - 1) connect_two(here, here + width, cost);
      }
    }
  }
  template <class Cost>
  void connect_two(int i, int j, Cost cost) {
    const float there = cost(), back = cost();
    add_edge(graph, i, j, there, back);
  }

  // The direction of arc a of node i.
  Direction direction(int i, int32_t a) const {
    const int step = arcs[static_cast<size_t>(a)].head - i;
    if (step == width) return kDown;
    return step == 1 ? kRight : step == -width ? kUp : kLeft;
  }
  void solve() { max_flow(graph, orphans.data(), static_cast<int32_t>(orphans.size())); }

  int width, height;
  std::vector<GraphNode> nodes;
  std::vector<GraphArc> arcs;
  std::vector<int32_t> orphans;
  SeamGraph graph{};
};

// A grid in exact blocks between guards.
struct GuardedGrid {
  GuardedGrid(int width, int height)
      : count(static_cast<size_t>(width) * static_cast<size_t>(height)),
        nodes((static_cast<size_t>(height) + 2) * static_cast<size_t>(width)),
        terminals(count),
        active(count + 1),
        orphans(count),
        grid{nodes.data(), terminals.data(), active.data(), orphans.data(), height, width} {}

  void take(const GeneralGrid& from) {
    for (size_t i = 0; i < nodes.size(); ++i) nodes[i] = GridNode{};
    for (size_t i = 0; i < count; ++i) {
      terminals[i] = from.nodes[i].terminal_capacity;
      for (int32_t a = from.nodes[i].first_arc; a != 0; a = from.arcs[static_cast<size_t>(a)].next)
        node(i).room[from.direction(static_cast<int>(i), a)] = from.arcs[static_cast<size_t>(a)].residual;
    }
  }
  GridNode& node(size_t i) { return grid.at(static_cast<int64_t>(i)); }

  size_t count;
  GuardedBlock<GridNode> nodes;
  GuardedBlock<float> terminals;
  GuardedBlock<uint32_t> active, orphans;
  Grid grid;
};

// Details with few and many differences, equal ones, and such whose differences wrap.
inline void fill_details(std::mt19937& random, int kind, std::vector<int32_t>& a, std::vector<int32_t>& b) {
  for (size_t i = 0; i < a.size(); ++i) {
    if (kind == 0) a[i] = static_cast<int32_t>(random() % 60), b[i] = static_cast<int32_t>(random() % 60);
    if (kind == 1) a[i] = b[i] = 5;
    if (kind == 2) a[i] = static_cast<int32_t>(random()), b[i] = static_cast<int32_t>(random());
    if (kind == 3) a[i] = random() % 9 == 0 ? static_cast<int32_t>(random() % 256) : 0;
  }
}

}  // namespace biseam::test
