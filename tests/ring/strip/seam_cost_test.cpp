#include "ring/strip/seam_cost.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "ring/strip/shape.hpp"
#include "support/guarded_block.hpp"
#include "support/random_source.hpp"

namespace biseam::test {

using namespace biseam::ring;

TEST(SeamCost, AddsDifferencesAndAPull) {
  RandomSource random;
  for (int round = 0; round < 2000; ++round) {
    const int width = random.between(1, 90), greatest = random.between(0, 2) == 0 ? kMaxFine : 3000;
    std::vector<int16_t> rows[5];
    for (auto& row : rows) {
      for (int b = 0; b < width; ++b)
        row.push_back(static_cast<int16_t>(random.between(0, 1) != 0 ? random.between(-greatest, greatest)
                                                                     : greatest * (1 - 2 * random.between(0, 1))));
    }
    const bool colour = random.between(0, 1) != 0;
    const int pull = random.between(0, 1) * random.between(0, 300);
    GuardedBlock<uint16_t> cost(static_cast<size_t>(width));
    kSeamCostRow.best()({rows[0].data(),
                         rows[1].data(),
                         rows[2].data(),
                         {colour ? rows[3].data() : nullptr, colour ? rows[4].data() : nullptr}},
                        pull, cost.data(), width);
    for (int b = 0; b < width; ++b) {
      const auto at = [&](int row, int i) {
        return double{static_cast<double>(rows[row][static_cast<size_t>(std::clamp(i, 0, width - 1))])};
      };
      double differences =
          std::abs(at(1, b)) / 2 + std::abs(at(2, b) - at(0, b)) / 4 + std::abs(at(1, b + 1) - at(1, b - 1)) / 4;
      if (colour) differences += (std::abs(at(3, b)) + std::abs(at(4, b))) / 4;
      const double pulled = std::floor(pull * std::abs(b - (width - 1) / 2.0));
      ASSERT_EQ(std::min(65535.0, std::floor(differences) + pulled), cost[static_cast<size_t>(b)]) << b << " of " << width;
    }
  }
}

}  // namespace biseam::test
