#include "stages/seam/graph.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace biseam::test {
namespace {

TEST(GraphRecords, HaveTheirSizesOnEveryHost) {
  EXPECT_EQ(sizeof(GraphNode), 28u);
  EXPECT_EQ(sizeof(GraphArc), 12u);
  EXPECT_EQ(offsetof(GraphNode, parent), 4u);
  EXPECT_EQ(offsetof(GraphNode, first_arc), 8u);
  EXPECT_EQ(offsetof(GraphNode, time_stamp), 12u);
  EXPECT_EQ(offsetof(GraphNode, distance), 16u);
  EXPECT_EQ(offsetof(GraphNode, terminal_capacity), 20u);
  EXPECT_EQ(offsetof(GraphNode, sink), 24u);
}

TEST(GraphBytes, CountTwoReservedArcs) {
  const GraphBytes bytes = graph_bytes(10, 26);
  EXPECT_EQ(bytes.nodes, 280);
  EXPECT_EQ(bytes.arcs, 12 * 26 + 24);
  EXPECT_EQ(bytes.orphans, 104);
}

class Graph : public testing::Test {
 protected:
  Graph() {
    std::memset(nodes, 0xa5, sizeof nodes);
    std::memset(arcs, 0xa5, sizeof arcs);
    std::memset(&graph, 0xa5, sizeof graph);
    reset_graph(graph, nodes, arcs);
  }
  void append(int count) {
    for (int i = 0; i < count; ++i) append_node(graph);
  }
  GraphNode nodes[4];
  GraphArc arcs[8];
  SeamGraph graph;
};

TEST_F(Graph, StartsEmpty) {
  EXPECT_EQ(graph.nodes, nodes);
  EXPECT_EQ(graph.arcs, arcs);
  EXPECT_EQ(graph.node_count, 0);
  EXPECT_EQ(graph.arc_count, 0);
  EXPECT_EQ(graph.flow, 0.0f);
}

TEST_F(Graph, NewNodesAreAllZero) {
  append(2);
  EXPECT_EQ(graph.node_count, 2);
  for (const int i : {0, 1}) {
    EXPECT_EQ(nodes[i].next_active, 0);
    EXPECT_EQ(nodes[i].parent, 0);
    EXPECT_EQ(nodes[i].first_arc, 0);
    EXPECT_EQ(nodes[i].time_stamp, 0);
    EXPECT_EQ(nodes[i].distance, 0);
    EXPECT_EQ(nodes[i].terminal_capacity, 0.0f);
    EXPECT_EQ(nodes[i].sink, 0);
    EXPECT_TRUE(on_source_side(graph, i));
  }
}

TEST_F(Graph, FirstEdgeReservesTwoZeroArcs) {
  append(2);
  add_edge(graph, 0, 1, 3.0f, 5.0f);
  EXPECT_EQ(graph.arc_count, 4);
  for (const int a : {0, 1}) {
    EXPECT_EQ(arcs[a].head, 0);
    EXPECT_EQ(arcs[a].next, 0);
    EXPECT_EQ(arcs[a].residual, 0.0f);
  }
  EXPECT_EQ(arcs[2].head, 1);
  EXPECT_EQ(arcs[2].next, 0);
  EXPECT_EQ(arcs[2].residual, 3.0f);
  EXPECT_EQ(arcs[3].head, 0);
  EXPECT_EQ(arcs[3].next, 0);
  EXPECT_EQ(arcs[3].residual, 5.0f);
  EXPECT_EQ(nodes[0].first_arc, 2);
  EXPECT_EQ(nodes[1].first_arc, 3);
}

TEST_F(Graph, NewestArcComesFirstInANodesList) {
  append(3);
  add_edge(graph, 0, 1, 1.0f, 1.0f);
  add_edge(graph, 2, 0, 2.0f, 4.0f);
  add_edge(graph, 0, 1, 6.0f, 7.0f);
  EXPECT_EQ(graph.arc_count, 8);
  EXPECT_EQ(nodes[0].first_arc, 6);
  EXPECT_EQ(arcs[6].next, 5);
  EXPECT_EQ(arcs[5].next, 2);
  EXPECT_EQ(arcs[2].next, 0);
  EXPECT_EQ(nodes[1].first_arc, 7);
  EXPECT_EQ(arcs[7].next, 3);
  EXPECT_EQ(nodes[2].first_arc, 4);
  const int heads[] = {0, 0, 1, 0, 0, 2, 1, 0};
  for (int a = 2; a < 8; ++a) EXPECT_EQ(arcs[a].head, heads[a]) << a;
  EXPECT_EQ(arcs[5].residual, 4.0f);
}

TEST_F(Graph, SelfLoopPutsBothArcsInOneList) {
  append(1);
  add_edge(graph, 0, 0, 1.0f, 2.0f);
  EXPECT_EQ(nodes[0].first_arc, 3);
  EXPECT_EQ(arcs[3].next, 2);
}

TEST_F(Graph, TerminalWeightsCancelIntoTheFlow) {
  append(2);
  add_terminal_weights(graph, 0, 7.0f, 4.0f);
  EXPECT_EQ(graph.flow, 4.0f);
  EXPECT_EQ(nodes[0].terminal_capacity, 3.0f);
  add_terminal_weights(graph, 0, 2.0f, 6.0f);  // 3 + 2 against 6
  EXPECT_EQ(graph.flow, 9.0f);
  EXPECT_EQ(nodes[0].terminal_capacity, -1.0f);
  add_terminal_weights(graph, 0, 5.0f, 1.0f);  // 5 against 1 + 1
  EXPECT_EQ(graph.flow, 11.0f);
  EXPECT_EQ(nodes[0].terminal_capacity, 3.0f);
  add_terminal_weights(graph, 1, 0.0f, 0.0f);
  EXPECT_EQ(graph.flow, 11.0f);
  EXPECT_EQ(nodes[1].terminal_capacity, 0.0f);
}

}  // namespace
}  // namespace biseam::test
