#include "stages/seam/grid.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "stages/seam/graph.hpp"

namespace biseam::test {
namespace {

struct Grid {
  Grid(int height, int width, std::vector<int32_t> first, std::vector<int32_t> second, int border = 2)
      : w(width), a(std::move(first)), b(std::move(second)) {
    // Exact blocks: reads and writes beyond them are seen by a sanitizer.
    a.shrink_to_fit();
    b.shrink_to_fit();
    const int n = height * width;
    nodes.resize(static_cast<size_t>(n));
    arcs.resize(static_cast<size_t>(2 * (2 * n - width - height) + 2));
    reset_graph(graph, nodes.data(), arcs.data());
    build_grid(graph, a.data(), b.data(), height, width, border);
  }
  // Capacity of the first arc from i to j.
  float capacity(int i, int j) const {
    for (int32_t arc = nodes[static_cast<size_t>(i)].first_arc; arc != 0; arc = arcs[static_cast<size_t>(arc)].next)
      if (arcs[static_cast<size_t>(arc)].head == j) return arcs[static_cast<size_t>(arc)].residual;
    return -1.0f;
  }
  float right_of(int r, int c) const { return capacity(r * w + c, r * w + c + 1); }
  float below(int r, int c) const { return capacity(r * w + c, (r + 1) * w + c); }

  int w;
  std::vector<int32_t> a, b;
  std::vector<GraphNode> nodes;
  std::vector<GraphArc> arcs;
  SeamGraph graph;
};

std::vector<int32_t> zeros(int height, int width) { return std::vector<int32_t>(static_cast<size_t>(height * width), 0); }

TEST(BuildGrid, IdenticalImagesCostOneAnd1001InTheFrame) {
  const Grid grid(7, 8, std::vector<int32_t>(56, 33), std::vector<int32_t>(56, 33));
  for (int r = 0; r < 7; ++r) {
    for (int c = 0; c < 8; ++c) {
      const bool inside_across = r >= 2 && r < 5 && c >= 2 && c < 5;  // columns 2-3, 3-4, 4-5
      const bool inside_down = r >= 2 && r < 4 && c >= 2 && c < 6;
      if (c < 7) {
        EXPECT_EQ(grid.right_of(r, c), inside_across ? 1.0f : 1001.0f) << r << ", " << c;
      }
      if (r < 6) {
        EXPECT_EQ(grid.below(r, c), inside_down ? 1.0f : 1001.0f) << r << ", " << c;
      }
    }
  }
}

TEST(BuildGrid, EveryEdgeHasTheSameCapacityBothWays) {
  std::vector<int32_t> a = zeros(6, 6);
  for (size_t i = 0; i < a.size(); ++i) a[i] = static_cast<int32_t>(i * i % 23);
  const Grid grid(6, 6, a, zeros(6, 6));
  for (int i = 2; i < grid.graph.arc_count; i += 2)
    EXPECT_EQ(grid.arcs[static_cast<size_t>(i)].residual, grid.arcs[static_cast<size_t>(i) + 1].residual);
}

TEST(BuildGrid, EdgeEndsAreThreeConsecutiveSamples) {
  std::vector<int32_t> a = zeros(9, 12);
  a[4 * 12 + 6] = 3;
  const Grid grid(9, 12, a, zeros(9, 12));
  // Sample (4, 6) counts in the ends (4, 4), (4, 5) and (4, 6).
  EXPECT_EQ(grid.right_of(4, 2), 1.0f);
  EXPECT_EQ(grid.right_of(4, 3), 10.0f);
  EXPECT_EQ(grid.right_of(4, 4), 19.0f);
  EXPECT_EQ(grid.right_of(4, 5), 19.0f);
  EXPECT_EQ(grid.right_of(4, 6), 10.0f);
  EXPECT_EQ(grid.right_of(4, 7), 1.0f);
  for (const int r : {3, 4}) {
    EXPECT_EQ(grid.below(r, 3), 1.0f);
    EXPECT_EQ(grid.below(r, 4), 10.0f);
    EXPECT_EQ(grid.below(r, 5), 10.0f);
    EXPECT_EQ(grid.below(r, 6), 10.0f);
    EXPECT_EQ(grid.below(r, 7), 1.0f);
  }
}

TEST(BuildGrid, SamplesBeyondARowAreThoseOfTheNext) {
  std::vector<int32_t> a = zeros(9, 6);
  a[5 * 6 + 0] = 2;
  const Grid grid(9, 6, a, zeros(9, 6));
  EXPECT_EQ(grid.right_of(4, 4), 1001.0f + 4.0f + 4.0f);  // (4, 4) and (4, 5) reach (5, 0)
  EXPECT_EQ(grid.right_of(4, 3), 1000.0f + 1.0f + 4.0f);
}

TEST(BuildGrid, SamplesPastTheEndCountAsZeroAndAreNotRead) {
  const Grid grid(3, 3, std::vector<int32_t>(9, 5), zeros(3, 3));
  EXPECT_EQ(grid.right_of(2, 1), 1001.0f + 50.0f + 25.0f);
  EXPECT_EQ(grid.right_of(2, 0), 1001.0f + 75.0f + 50.0f);
  EXPECT_EQ(grid.below(1, 2), 1001.0f + 25.0f + 75.0f);
  EXPECT_EQ(grid.below(1, 1), 1001.0f + 50.0f + 75.0f);
}

TEST(BuildGrid, InteriorColumnsCancelAndCountInTheFlow) {
  const Grid grid(7, 8, zeros(7, 8), zeros(7, 8));
  for (int r = 0; r < 7; ++r) {
    for (int c = 0; c < 8; ++c) {
      const bool tied_row = r >= 2 && r < 5;
      const float expected = !tied_row ? 0.0f : c < 2 ? 100000.0f : c >= 6 ? -100000.0f : 0.0f;
      EXPECT_EQ(grid.nodes[static_cast<size_t>(8 * r + c)].terminal_capacity, expected) << r << ", " << c;
    }
  }
  EXPECT_EQ(grid.graph.flow, 3 * 4 * 100000.0f);
}

TEST(BuildGrid, FlowIsSummedInSinglePrecision) {
  float flow = 0.0f;
  for (int i = 0; i < 76 * 76; ++i) flow += 100000.0f;
  ASSERT_NE(static_cast<double>(flow), 76.0 * 76.0 * 100000.0);
  const Grid grid(80, 80, zeros(80, 80), zeros(80, 80));
  EXPECT_EQ(grid.graph.flow, flow);
}

TEST(BuildGrid, LargeDifferencesAreSummedInSinglePrecisionInOrder) {
  constexpr int32_t top = std::numeric_limits<int32_t>::max();
  const Grid grid(1, 2, {4097, 3}, {0, 0});
  // 4097 squared is no float: 16785409 becomes 16785408.
  EXPECT_EQ(grid.right_of(0, 0), ((16785408.0f + 9.0f + 0.0f) + (9.0f + 0.0f + 0.0f) + 1.0f) + 1000.0f);
  const Grid wrapped(1, 2, {top, 0}, {-1, 0});
  EXPECT_EQ(wrapped.right_of(0, 0), 4611686018427387904.0f);
}

TEST(BuildGrid, OneRowOrColumnIsAChain) {
  const Grid row(1, 5, zeros(1, 5), zeros(1, 5));
  EXPECT_EQ(row.graph.arc_count, 2 + 2 * 4);
  const Grid column(5, 1, zeros(5, 1), zeros(5, 1));
  EXPECT_EQ(column.graph.arc_count, 2 + 2 * 4);
  const Grid point(1, 1, zeros(1, 1), zeros(1, 1));
  EXPECT_EQ(point.graph.arc_count, 0);
  EXPECT_EQ(point.graph.node_count, 1);
}

// The whole graph once more, from padded copies and with plain conditions.
void expect_plain_grid(const Grid& grid, int h, int w, int border) {
  std::vector<float> d;
  for (size_t i = 0; i < grid.a.size(); ++i) d.push_back(static_cast<float>(grid.a[i] - grid.b[i]));
  d.push_back(0.0f);
  d.push_back(0.0f);
  const auto end = [&](int y, int x) {
    const auto i = static_cast<size_t>(y * w + x);
    return d[i] * d[i] + d[i + 1] * d[i + 1] + d[i + 2] * d[i + 2];
  };
  int32_t arc = 2;
  std::vector<int32_t> newest(grid.a.size(), 0);
  const auto expect_edge = [&](int i, int j, float cost) {
    const GraphArc there = grid.arcs[static_cast<size_t>(arc)];
    const GraphArc back = grid.arcs[static_cast<size_t>(arc) + 1];
    ASSERT_EQ(there.head, j);
    ASSERT_EQ(back.head, i);
    ASSERT_EQ(there.residual, cost);
    ASSERT_EQ(back.residual, cost);
    ASSERT_EQ(there.next, newest[static_cast<size_t>(i)]);
    ASSERT_EQ(back.next, newest[static_cast<size_t>(j)]);
    newest[static_cast<size_t>(i)] = arc;
    newest[static_cast<size_t>(j)] = arc + 1;
    arc += 2;
  };
  float flow = 0.0f;
  for (int r = 0; r < h; ++r) {
    for (int c = 0; c < w; ++c) {
      float source = 0.0f, sink = 0.0f;
      if (!(r < border || r >= h - border)) {
        source = c < w - border ? 100000.0f : 0.0f;
        sink = c < border ? 0.0f : 100000.0f;
      }
      flow += source < sink ? source : sink;
      ASSERT_EQ(grid.nodes[static_cast<size_t>(r * w + c)].terminal_capacity, source - sink) << r << ", " << c;
      if (c < w - 1) {
        float cost = end(r, c) + end(r, c + 1) + 1.0f;
        if (r < border || r >= h - border || c < border || c >= w - border - 1) cost += 1000.0f;
        expect_edge(r * w + c, r * w + c + 1, cost);
      }
      if (r < h - 1) {
        float cost = end(r + 1, c) + end(r, c) + 1.0f;
        if (r < border || r >= h - border - 1 || c < border || c >= w - border) cost += 1000.0f;
        expect_edge(r * w + c, (r + 1) * w + c, cost);
      }
    }
  }
  EXPECT_EQ(grid.graph.node_count, h * w);
  EXPECT_EQ(grid.graph.arc_count, h * w > 1 ? arc : 0);
  EXPECT_EQ(grid.graph.flow, flow);
  for (size_t i = 0; i < newest.size(); ++i) EXPECT_EQ(grid.nodes[i].first_arc, newest[i]);
}

TEST(BuildGrid, RandomImagesOfAllSizesAndBorders) {
  const unsigned seed = 32001;
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  for (int h = 1; h <= 9; ++h) {
    for (int w = 1; w <= 9; ++w) {
      for (int border = 0; border <= 5; ++border) {
        SCOPED_TRACE(testing::Message() << h << " x " << w << ", " << border);
        std::vector<int32_t> a, b;
        for (int i = 0; i < h * w; ++i) {
          a.push_back(static_cast<int32_t>(random() % 5000));
          b.push_back(static_cast<int32_t>(random() % 256));
        }
        expect_plain_grid(Grid(h, w, a, b, border), h, w, border);
      }
    }
  }
}

}  // namespace
}  // namespace biseam::test
