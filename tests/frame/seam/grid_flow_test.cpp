#include "frame/seam/grid_flow.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "frame/seam/grid_costs.hpp"
#include "frame/seam/grids.hpp"
#include "stages/seam/grid.hpp"

namespace biseam::test {
namespace {

void expect_same_state(const GeneralGrid& general, GuardedGrid& special) {
  for (size_t i = 0; i < special.count; ++i) {
    const GraphNode& expected = general.nodes[i];
    const GridNode& node = special.node(i);
    ASSERT_EQ(expected.sink, node.sink) << i;
    ASSERT_EQ(expected.terminal_capacity, special.terminals[i]) << i;
    ASSERT_EQ(expected.parent > 0, node.parent > kGridOrphan) << i;
    ASSERT_EQ(expected.time_stamp, node.time_stamp) << i;
    ASSERT_EQ(0, node.queued);
    if (expected.parent <= 0) {
      ASSERT_EQ(expected.parent == kParentNone ? kGridFree : kGridRoot, node.parent) << i;
    } else {
      const int32_t head = general.arcs[static_cast<size_t>(expected.parent)].head;
      ASSERT_EQ(static_cast<uint32_t>(head + general.width) * sizeof(GridNode), node.parent) << i;
      ASSERT_EQ(general.direction(static_cast<int>(i), expected.parent), node.to_parent) << i;
    }
    ASSERT_EQ(expected.distance, node.distance) << i;
    float room[4] = {};
    for (int32_t a = expected.first_arc; a != 0; a = general.arcs[static_cast<size_t>(a)].next)
      room[general.direction(static_cast<int>(i), a)] = general.arcs[static_cast<size_t>(a)].residual;
    for (const Direction d : {kDown, kRight, kLeft, kUp}) ASSERT_EQ(room[d], node.room[d]) << i << " " << int{d};
  }
}

// Random ties: between the borders, anywhere, or so large and small that rounding takes part.
void tie(GeneralGrid& grid, std::mt19937& random, int kind) {
  std::uniform_real_distribution<float> real(0.0f, 1.0f);
  for (int r = 0; r < grid.height; ++r) {
    for (int c = 0; c < grid.width; ++c) {
      append_node(grid.graph);
      float weight = 0.0f;
      if (kind == 0 && r >= 2 && r < grid.height - 2) weight = c < 2 ? kTie : c >= grid.width - 2 ? -kTie : 0.0f;
      if (kind == 1 && random() % 3 == 0) weight = static_cast<float>(static_cast<int>(random() % 200) - 100);
      if (kind == 2 && random() % 5 == 0) weight = (real(random) - 0.5f) * std::ldexp(1.0f, static_cast<int>(random() % 60));
      add_terminal_weights(grid.graph, r * grid.width + c, weight > 0 ? weight : 0.0f, weight < 0 ? -weight : 0.0f);
    }
  }
}

// Random, equal, fractional and extreme costs, and infinite ones.
float cost_of(std::mt19937& random, int kind) {
  std::uniform_real_distribution<float> real(0.0f, 1.0f);
  switch (kind) {
    case 0:
      return static_cast<float>(random() % 50);
    case 1:
      return 1.0f;
    case 2:
      return real(random) * 1000.0f;
    case 3:
      return random() % 4 == 0 ? 0.0f : std::ldexp(1.0f + real(random), static_cast<int>(random() % 66));
    default:
      return random() % 6 == 0 ? std::numeric_limits<float>::infinity() : static_cast<float>(random() % 9);
  }
}

TEST(SolveGrid, EndsInTheStateOfTheGeneralSearch) {
  const unsigned seed = 32031;
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  for (int round = 0; round < 6000; ++round) {
    const int most = round % 20 == 0 ? 40 : 12;
    const int w = 1 + static_cast<int>(random() % static_cast<unsigned>(most));
    const int h = 1 + static_cast<int>(random() % static_cast<unsigned>(most));
    SCOPED_TRACE(testing::Message() << "round " << round << ": " << w << " x " << h);
    GeneralGrid general(w, h);
    tie(general, random, round % 3);
    const bool symmetric = random() % 2 == 0;
    float last = 0.0f;
    bool back = false;
    general.connect([&] {
      if (!(symmetric && back)) last = cost_of(random, round / 3 % 5);
      back = !back;
      return last;
    });
    GuardedGrid special(w, h);
    special.take(general);
    general.solve();
    solve_grid(special.grid);
    expect_same_state(general, special);
    if (HasFatalFailure()) return;
  }
}

TEST(SolveGrid, SeamSearchesOfAllKindsEndInTheStateOfTheGeneralSearch) {
  const unsigned seed = 32033;
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  const int sizes[][2] = {{16, 480}, {32, 200}, {64, 120}, {5, 300}, {90, 40}, {16, 33}, {24, 24}, {7, 7}};
  for (int round = 0; round < 32; ++round) {
    const int w = sizes[round % 8][0], h = sizes[round % 8][1];
    SCOPED_TRACE(testing::Message() << "round " << round << ": " << w << " x " << h);
    const size_t count = static_cast<size_t>(w) * static_cast<size_t>(h);
    std::vector<int32_t> a(count), b(count);
    fill_details(random, round / 8, a, b);
    GeneralGrid general(w, h);
    build_grid(general.graph, a.data(), b.data(), h, w, 2);
    GuardedGrid special(w, h);
    GuardedBlock<float> rows(static_cast<size_t>(kGridCostRows * w));
    fill_grid(special.grid, a.data(), b.data(), 2, rows.data());
    general.solve();
    solve_grid(special.grid);
    expect_same_state(general, special);
    if (HasFatalFailure()) return;
  }
}

}  // namespace
}  // namespace biseam::test
