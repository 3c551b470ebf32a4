#include "ring/near/disparity_path.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "support/random_source.hpp"

namespace biseam::test {
namespace {

using namespace ring;

int64_t cost_of(const std::vector<PathCosts>& costs, const std::vector<int8_t>& path) {
  int64_t sum = 0;
  for (std::size_t t = 0; t < path.size(); ++t) {
    const int next = path[(t + 1) % path.size()];
    sum += costs[t].values[path[t]] + std::min(std::abs(path[t] - next) * kStepCost, kJumpCost);
  }
  return sum;
}

// Of every closed path there is.
int64_t least_cost(const std::vector<PathCosts>& costs, int disparities) {
  std::vector<int8_t> path(costs.size(), 0);
  int64_t least = cost_of(costs, path);
  for (;;) {
    std::size_t t = 0;
    while (t < path.size() && ++path[t] == disparities) path[t++] = 0;
    if (t == path.size()) return least;
    least = std::min(least, cost_of(costs, path));
  }
}

std::vector<PathCosts> random_costs(RandomSource& random, std::size_t length, int most) {
  std::vector<PathCosts> costs(length);
  for (PathCosts& place : costs) {
    for (int32_t& cost : place.values) cost = random.between(0, most);
  }
  return costs;
}

std::vector<int8_t> path_of(const std::vector<PathCosts>& costs, int disparities) {
  std::vector<PathCosts> memory(costs.size());
  std::vector<int8_t> path(costs.size(), -1);
  find_disparities(costs.data(), static_cast<int>(costs.size()), disparities, memory.data(), path.data());
  return path;
}

TEST(DisparityPath, IsTheBestOfAllClosedPaths) {
  RandomSource random;
  for (int run = 0; run < 200; ++run) {
    const int disparities = random.between(3, 7);
    const std::vector<PathCosts> costs = random_costs(random, run % 2 == 0 ? 5 : 6, run % 3 == 0 ? 500 : 5000);
    const std::vector<int8_t> path = path_of(costs, disparities);
    ASSERT_TRUE(std::all_of(path.begin(), path.end(), [&](int8_t d) { return d >= 0 && d < disparities; }));
    ASSERT_EQ(cost_of(costs, path), least_cost(costs, disparities)) << run;
  }
}

// Where it begins makes no difference.
TEST(DisparityPath, CostsTheSameFromAnyPlaceOn) {
  RandomSource random;
  std::vector<PathCosts> costs = random_costs(random, 960, 3000);
  const int64_t cost = cost_of(costs, path_of(costs, kMostDisparities));
  for (const int turn : {1, 7, 480}) {
    std::rotate(costs.begin(), costs.begin() + turn, costs.end());
    EXPECT_EQ(cost_of(costs, path_of(costs, kMostDisparities)), cost);
  }
}

TEST(DisparityPath, HasTheLargestCosts) {
  const std::vector<PathCosts> costs(kMostSearchLength, {{65535, 65535, 65535, 65535, 65535, 65535, 65535, 65535, 65535, 65535,
                                                          65535, 65535, 65535, 65535, 65535, 65535}});
  EXPECT_EQ(cost_of(costs, path_of(costs, kMostDisparities)), int64_t{65535} * kMostSearchLength);
}

}  // namespace
}  // namespace biseam::test
