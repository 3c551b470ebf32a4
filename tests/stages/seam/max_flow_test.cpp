#include "stages/seam/max_flow.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <deque>
#include <random>
#include <vector>

#include "stages/seam/graph.hpp"
#include "stages/seam/images.hpp"
#include "stages/seam/reference_flow.hpp"
#include "support/failing_heap.hpp"

namespace biseam::test {
namespace {

// The graph under test in exact blocks, the orphan stack between sentinels.
struct Solved {
  explicit Solved(const TestGraph& plain)
      : arcs(2 * plain.edges.size() + 2), orphans(2 * static_cast<int64_t>(plain.edges.size())) {
    nodes.resize(static_cast<size_t>(plain.node_count));
    reset_graph(graph, nodes.data(), arcs.data());
    for (int i = 0; i < plain.node_count; ++i) {
      append_node(graph);
      const auto weight = static_cast<float>(plain.terminal[static_cast<size_t>(i)]);
      add_terminal_weights(graph, i, weight > 0 ? weight : 0.0f, weight < 0 ? -weight : 0.0f);
    }
    for (const TestEdge& edge : plain.edges)
      add_edge(graph, edge.i, edge.j, static_cast<float>(edge.capacity), static_cast<float>(edge.reverse_capacity));
    const FailingHeap heap;
    flow = max_flow(graph, orphans.data(), 2 * static_cast<int32_t>(plain.edges.size()));
    EXPECT_EQ(heap.requests(), 0);
  }
  std::vector<bool> source_side() const {
    std::vector<bool> side;
    for (int i = 0; i < graph.node_count; ++i) side.push_back(on_source_side(graph, i));
    return side;
  }
  bool is_free(int i) const { return nodes[static_cast<size_t>(i)].parent == kParentNone; }

  // Nodes that the residual still lets the source reach.
  std::vector<bool> reached_from_source() const {
    std::vector<bool> reached(nodes.size(), false);
    std::deque<int32_t> queue;
    for (int i = 0; i < graph.node_count; ++i) {
      if (nodes[static_cast<size_t>(i)].terminal_capacity <= 0.0f) continue;
      reached[static_cast<size_t>(i)] = true;
      queue.push_back(i);
    }
    while (!queue.empty()) {
      int32_t a = nodes[static_cast<size_t>(queue.front())].first_arc;
      queue.pop_front();
      for (; a != 0; a = arcs[static_cast<size_t>(a)].next) {
        const GraphArc& arc = arcs[static_cast<size_t>(a)];
        if (arc.residual == 0.0f || reached[static_cast<size_t>(arc.head)]) continue;
        reached[static_cast<size_t>(arc.head)] = true;
        queue.push_back(arc.head);
      }
    }
    return reached;
  }

  std::vector<GraphNode> nodes;
  std::vector<GraphArc> arcs;
  GuardedSamples orphans;
  SeamGraph graph{};
  float flow = 0.0f;
};

TestGraph random_graph(std::mt19937& random) {
  TestGraph graph;
  graph.node_count = 1 + static_cast<int>(random() % 24);
  const auto node = [&] { return static_cast<int>(random() % static_cast<unsigned>(graph.node_count)); };
  const unsigned most = 1 + random() % 30;
  const auto capacity = [&] { return random() % 4 == 0 ? 0 : static_cast<int>(random() % most); };
  const bool symmetric = random() % 2 == 0;
  const int edges = static_cast<int>(random() % 80);
  for (int e = 0; e < edges; ++e) {
    TestEdge edge{node(), node(), capacity(), capacity()};
    if (symmetric) edge.reverse_capacity = edge.capacity;
    graph.edges.push_back(edge);
  }
  const unsigned ties = 1 + random() % 4;
  for (int i = 0; i < graph.node_count; ++i)
    graph.terminal.push_back(random() % ties == 0 ? static_cast<int>(random() % 60) - 30 : 0);
  return graph;
}

TestGraph random_grid(std::mt19937& random) {
  const int h = 1 + static_cast<int>(random() % 12);
  const int w = 1 + static_cast<int>(random() % 12);
  TestGraph grid;
  grid.node_count = h * w;
  const unsigned most = 2 + random() % 40;
  const bool symmetric = random() % 4 != 0;
  const bool banded = random() % 2 == 0;
  const auto connect = [&](int i, int j) {
    const int there = static_cast<int>(random() % most);
    grid.edges.push_back({i, j, there, symmetric ? there : static_cast<int>(random() % most)});
  };
  for (int r = 0; r < h; ++r) {
    for (int c = 0; c < w; ++c) {
      if (c < w - 1) connect(r * w + c, r * w + c + 1);
      if (r < h - 1) connect(r * w + c, (r + 1) * w + c);
      if (banded)
        grid.terminal.push_back(c < 2 ? 1000 : c >= w - 2 ? -1000 : 0);
      else
        grid.terminal.push_back(random() % 3 == 0 ? static_cast<int>(random() % 100) - 50 : 0);
    }
  }
  return grid;
}

// The parts of the answer that do not depend on any order.
void expect_maximum(const TestGraph& plain, const Solved& solved) {
  const int64_t flow = dinic_flow(plain);
  ASSERT_EQ(static_cast<int64_t>(solved.flow), flow);
  ASSERT_EQ(solved.graph.flow, solved.flow);
  const std::vector<bool> reached = solved.reached_from_source();
  ASSERT_EQ(plain.cut_capacity(reached), flow);
  for (int i = 0; i < plain.node_count; ++i) {
    const bool in_source_tree = on_source_side(solved.graph, i) && !solved.is_free(i);
    ASSERT_EQ(reached[static_cast<size_t>(i)], in_source_tree) << i;
    ASSERT_EQ(solved.nodes[static_cast<size_t>(i)].next_active, 0);
    ASSERT_NE(solved.nodes[static_cast<size_t>(i)].parent, kParentOrphan);
    if (solved.is_free(i)) {
      ASSERT_EQ(solved.nodes[static_cast<size_t>(i)].time_stamp, 0);
    }
  }
}

void expect_reference_labels(const TestGraph& plain, const Solved& solved) {
  ReferenceTrees reference(plain);
  ASSERT_EQ(reference.run(), static_cast<int64_t>(solved.flow));
  for (int i = 0; i < plain.node_count; ++i) {
    ASSERT_EQ(on_source_side(solved.graph, i), reference.on_source_side(i)) << i;
    ASSERT_EQ(solved.is_free(i), reference.is_free(i)) << i;
  }
}

TEST(MaxFlow, RandomGraphsHaveTheFlowOfAnotherMethod) {
  const unsigned seed = 32011;
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  for (int round = 0; round < 20000; ++round) {
    SCOPED_TRACE(round);
    const TestGraph plain = random_graph(random);
    const Solved solved(plain);
    expect_maximum(plain, solved);
    expect_reference_labels(plain, solved);
    if (HasFatalFailure()) return;
  }
}

TEST(MaxFlow, RandomGridsHaveTheFlowOfAnotherMethod) {
  const unsigned seed = 32012;
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  for (int round = 0; round < 4000; ++round) {
    SCOPED_TRACE(round);
    const TestGraph plain = random_grid(random);
    const Solved solved(plain);
    expect_maximum(plain, solved);
    expect_reference_labels(plain, solved);
    if (HasFatalFailure()) return;
  }
}

TEST(MaxFlow, WithoutFreeNodesTheLabelsAreAMinimumCut) {
  const unsigned seed = 32013;
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  int without_free_nodes = 0;
  for (int round = 0; round < 4000; ++round) {
    const TestGraph plain = round % 2 == 0 ? random_graph(random) : random_grid(random);
    const Solved solved(plain);
    bool any_free = false;
    for (int i = 0; i < plain.node_count; ++i) any_free = any_free || solved.is_free(i);
    const int64_t capacity = plain.cut_capacity(solved.source_side());
    ASSERT_GE(capacity, static_cast<int64_t>(solved.flow)) << round;
    if (any_free) continue;
    ++without_free_nodes;
    ASSERT_EQ(capacity, static_cast<int64_t>(solved.flow)) << round;
  }
  EXPECT_GT(without_free_nodes, 500);
}

TEST(MaxFlow, SolvedGraphHasNothingLeftToSend) {
  const unsigned seed = 32014;
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  for (int round = 0; round < 500; ++round) {
    const TestGraph plain = random_graph(random);
    Solved solved(plain);
    const std::vector<bool> reached = solved.reached_from_source();
    const float again = max_flow(solved.graph, solved.orphans.data(), 2 * static_cast<int32_t>(plain.edges.size()));
    EXPECT_EQ(again, solved.flow);
    EXPECT_EQ(solved.reached_from_source(), reached);
  }
}

TEST(MaxFlow, EmptyGraphHasNoFlow) {
  const Solved solved(TestGraph{});
  EXPECT_EQ(solved.flow, 0.0f);
}

TEST(MaxFlow, ChainCarriesWhatItsNarrowestPartLetsThrough) {
  const TestGraph plain{4, {{0, 1, 9, 0}, {1, 2, 4, 0}, {2, 3, 7, 0}}, {8, 0, 0, -20}};
  const Solved solved(plain);
  EXPECT_EQ(solved.flow, 4.0f);
  EXPECT_EQ(solved.source_side(), (std::vector<bool>{true, true, false, false}));
}

TEST(MaxFlow, FlowStartsFromWhatTheTerminalsSendStraightThrough) {
  std::vector<GraphNode> nodes(1);
  GraphArc arcs[2];
  SeamGraph graph;
  reset_graph(graph, nodes.data(), arcs);
  append_node(graph);
  add_terminal_weights(graph, 0, 5.0f, 3.0f);
  EXPECT_EQ(max_flow(graph, nullptr, 0), 3.0f);
  EXPECT_TRUE(on_source_side(graph, 0));
}

TEST(MaxFlow, NodeWhoseTerminalWeightsCancelStartsFreeAndCountsAsSource) {
  std::vector<GraphNode> nodes(1);
  GraphArc arcs[2];
  SeamGraph graph;
  reset_graph(graph, nodes.data(), arcs);
  append_node(graph);
  add_terminal_weights(graph, 0, 100000.0f, 100000.0f);
  EXPECT_EQ(max_flow(graph, nullptr, 0), 100000.0f);
  EXPECT_EQ(nodes[0].parent, kParentNone);
  EXPECT_TRUE(on_source_side(graph, 0));
}

TEST(MaxFlow, FreeNodeKeepsTheSideItWasLastOn) {
  // Node 1 joins the sink's tree first and loses its only way there with the first flow.
  const TestGraph plain{3, {{1, 0, 3, 0}, {2, 1, 3, 0}}, {-5, 0, 5}};
  const Solved solved(plain);
  EXPECT_EQ(solved.flow, 3.0f);
  EXPECT_TRUE(solved.is_free(1));
  EXPECT_FALSE(on_source_side(solved.graph, 1));

  // The same turned round: it joins the source's tree.
  const TestGraph turned{3, {{0, 1, 3, 0}, {1, 2, 3, 0}}, {5, 0, -5}};
  const Solved other(turned);
  EXPECT_EQ(other.flow, 3.0f);
  EXPECT_TRUE(other.is_free(1));
  EXPECT_TRUE(on_source_side(other.graph, 1));
}

TEST(MaxFlow, FreeNodesKeepTheirSidesAlsoWhereTheLabelsAreNoMinimumCut) {
  // As above, with a node 3 that no tree ever reaches: it counts as source's although node 1 behind it does not.
  const TestGraph plain{4, {{1, 0, 3, 0}, {2, 1, 3, 0}, {3, 1, 7, 0}}, {-5, 0, 5, 0}};
  const Solved solved(plain);
  EXPECT_EQ(solved.flow, 3.0f);
  EXPECT_EQ(solved.source_side(), (std::vector<bool>{false, false, true, true}));
  EXPECT_TRUE(solved.is_free(3));
  EXPECT_EQ(plain.cut_capacity(solved.source_side()), 10);
}

TEST(MaxFlow, GrowthRehangsOnlyForAGainOfTwo) {
  // Both roots could hold node 2 at distance 2: the first keeps it.
  const TestGraph plain{3, {{0, 2, 1, 1}, {1, 2, 1, 1}}, {5, 5, 0}};
  const Solved solved(plain);
  EXPECT_EQ(solved.arcs[static_cast<size_t>(solved.nodes[2].parent)].head, 0);
  EXPECT_EQ(solved.nodes[2].distance, 2);
}

TEST(MaxFlow, OrphanTakesTheEarlierOfTwoEquallyNearParents) {
  // The first flow spends the terminal of node 0 and orphans node 3, whose list runs 4, 2, 1, 0.
  const TestGraph plain{5, {{3, 0, 5, 0}, {3, 1, 5, 0}, {3, 2, 5, 0}, {4, 3, 9, 0}}, {-3, -9, -9, 0, 3}};
  const Solved solved(plain);
  EXPECT_EQ(solved.flow, 3.0f);
  EXPECT_EQ(solved.arcs[static_cast<size_t>(solved.nodes[3].parent)].head, 2);
}

TEST(MaxFlow, ZeroCapacityArcsAndSelfLoopsCarryNothing) {
  const TestGraph plain{2, {{0, 1, 0, 0}, {0, 0, 7, 7}, {1, 1, 7, 7}, {1, 0, 6, 0}}, {5, -5}};
  const Solved solved(plain);
  EXPECT_EQ(solved.flow, 0.0f);
  EXPECT_EQ(solved.source_side(), (std::vector<bool>{true, false}));
}

TEST(MaxFlow, ClearsWhatTheNodesHeldBefore) {
  std::vector<GraphNode> nodes(2);
  std::vector<GraphArc> arcs(4);
  int32_t orphans[2];
  SeamGraph graph;
  reset_graph(graph, nodes.data(), arcs.data());
  append_node(graph);
  append_node(graph);
  add_terminal_weights(graph, 0, 5.0f, 0.0f);
  add_terminal_weights(graph, 1, 0.0f, 5.0f);
  add_edge(graph, 0, 1, 2.0f, 0.0f);
  nodes[0].next_active = nodes[1].next_active = 1000;
  nodes[0].parent = nodes[1].parent = 1000;
  nodes[0].time_stamp = nodes[1].time_stamp = 1000;
  nodes[0].sink = 1;
  EXPECT_EQ(max_flow(graph, orphans, 2), 2.0f);
  EXPECT_TRUE(on_source_side(graph, 0));
  EXPECT_FALSE(on_source_side(graph, 1));
}

TEST(MaxFlow, StackThatCouldOverflowIsRefused) {
  std::vector<GraphNode> nodes(2);
  std::vector<GraphArc> arcs(4);
  GuardedSamples orphans(1);
  SeamGraph graph;
  reset_graph(graph, nodes.data(), arcs.data());
  append_node(graph);
  append_node(graph);
  add_terminal_weights(graph, 0, 5.0f, 1.0f);
  add_terminal_weights(graph, 1, 0.0f, 4.0f);
  add_edge(graph, 0, 1, 4.0f, 0.0f);
  EXPECT_EQ(max_flow(graph, orphans.data(), 1), 1.0f);
  EXPECT_EQ(nodes[0].terminal_capacity, 4.0f);
  int32_t enough[2];
  EXPECT_EQ(max_flow(graph, enough, 2), 5.0f);
}

}  // namespace
}  // namespace biseam::test
