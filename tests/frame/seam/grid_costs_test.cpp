#include "frame/seam/grid_costs.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "frame/seam/grids.hpp"
#include "stages/seam/grid.hpp"

namespace biseam::test {
namespace {

TEST(FillGrid, IsTheGraphOfTheGeneralGrid) {
  const unsigned seed = 32032;
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  for (int round = 0; round < 1500; ++round) {
    const int w = 1 + static_cast<int>(random() % 40), h = 1 + static_cast<int>(random() % 30);
    const int border = round % 5 == 0 ? static_cast<int>(random() % 9) : 2;
    SCOPED_TRACE(testing::Message() << "round " << round << ": " << w << " x " << h << " border " << border);
    const size_t count = static_cast<size_t>(w) * static_cast<size_t>(h);
    std::vector<int32_t> a(count), b(count);
    fill_details(random, round % 4, a, b);
    GeneralGrid general(w, h);
    build_grid(general.graph, a.data(), b.data(), h, w, border);
    GuardedGrid expected(w, h), special(w, h);
    expected.take(general);
    GuardedBlock<float> rows(static_cast<size_t>(kGridCostRows * w));
    fill_grid(special.grid, a.data(), b.data(), border, rows.data());
    for (size_t i = 0; i < special.nodes.size(); ++i) {
      for (const Direction d : {kDown, kRight, kLeft, kUp}) ASSERT_EQ(expected.nodes[i].room[d], special.nodes[i].room[d]) << i;
      ASSERT_EQ(0, special.nodes[i].sink);
      ASSERT_EQ(kGridFree, special.nodes[i].parent);
    }
    for (size_t i = 0; i < count; ++i) ASSERT_EQ(expected.terminals[i], special.terminals[i]) << i;
  }
}

}  // namespace
}  // namespace biseam::test
