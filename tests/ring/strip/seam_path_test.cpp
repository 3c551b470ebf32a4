#include "ring/strip/seam_path.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "support/guarded_block.hpp"
#include "support/random_source.hpp"

namespace biseam::test {

namespace {

using namespace biseam::ring;

// The least sum over every closed path there is.
void try_all(StripShape shape, const std::vector<uint16_t>& cost, int margin, int t, int first, int b, uint64_t sum,
             uint64_t& best) {
  sum += cost[static_cast<size_t>(t * shape.width + b)];
  if (t == shape.length - 1) {
    if (std::abs(b - first) <= 1) best = std::min(best, sum);
    return;
  }
  for (int next = std::max(b - 1, margin); next <= std::min(b + 1, shape.width - 1 - margin); ++next) {
    try_all(shape, cost, margin, t + 1, first, next, sum, best);
  }
}

uint64_t brute_force(StripShape shape, const std::vector<uint16_t>& cost, int margin) {
  uint64_t best = UINT64_MAX;
  for (int b = margin; b <= shape.width - 1 - margin; ++b) try_all(shape, cost, margin, 0, b, b, 0, best);
  return best;
}

// The least sum, first row by first row.
uint64_t row_by_row(StripShape shape, const std::vector<uint16_t>& cost, int margin) {
  constexpr uint64_t kNone = UINT64_MAX / 2;
  uint64_t best = kNone;
  for (int first = margin; first <= shape.width - 1 - margin; ++first) {
    std::vector<uint64_t> sums(static_cast<size_t>(shape.width), kNone);
    sums[static_cast<size_t>(first)] = cost[static_cast<size_t>(first)];
    for (int t = 1; t <= shape.length; ++t) {
      std::vector<uint64_t> next(sums.size(), kNone);
      for (int b = margin; b <= shape.width - 1 - margin; ++b) {
        for (int from = std::max(b - 1, margin); from <= std::min(b + 1, shape.width - 1 - margin); ++from) {
          const uint64_t more = t < shape.length ? cost[static_cast<size_t>(t * shape.width + b)] : 0;
          next[static_cast<size_t>(b)] = std::min(next[static_cast<size_t>(b)], sums[static_cast<size_t>(from)] + more);
        }
      }
      sums = next;
    }
    best = std::min(best, sums[static_cast<size_t>(first)]);
  }
  return best;
}

uint64_t search(StripShape shape, const std::vector<uint16_t>& cost, int margin, std::vector<int16_t>& rows) {
  GuardedBlock<uint64_t> memory((seam_search_bytes(shape) + 7) / 8);
  GuardedBlock<int16_t> path(static_cast<size_t>(shape.length));
  const uint64_t sum = find_seam(shape, cost.data(), margin, memory.data(), path.data());
  rows = path.values();
  uint64_t added = 0;
  for (int t = 0; t < shape.length; ++t) {
    const int b = rows[static_cast<size_t>(t)];
    EXPECT_GE(b, margin);
    EXPECT_LE(b, shape.width - 1 - margin);
    EXPECT_LE(std::abs(b - rows[static_cast<size_t>((t + 1) % shape.length)]), 1) << "at " << t;
    added += cost[static_cast<size_t>(t * shape.width + b)];
  }
  EXPECT_EQ(added, sum);
  return sum;
}

std::vector<uint16_t> random_costs(RandomSource& random, StripShape shape) {
  std::vector<uint16_t> cost(static_cast<size_t>(strip_samples(shape)));
  const int kind = random.between(0, 3), greatest = kind == 0 ? 1 : kind == 1 ? 9 : 65535;
  for (uint16_t& c : cost) c = static_cast<uint16_t>(random.between(0, greatest));
  // Valleys that climb and do not meet: where open and closed paths differ most.
  if (kind == 3) {
    for (int t = 0; t < shape.length; ++t) {
      for (int b = 0; b < shape.width; ++b) {
        const int valley = (t * shape.width / shape.length + random.between(0, 1)) % shape.width;
        if (b == valley) cost[static_cast<size_t>(t * shape.width + b)] = 0;
      }
    }
  }
  return cost;
}

}  // namespace

TEST(SeamPath, IsTheBestOfAllClosedPaths) {
  RandomSource random;
  std::vector<int16_t> rows;
  for (int round = 0; round < 1500; ++round) {
    const StripShape shape{random.between(2, 8), random.between(1, 6)};
    const int margin = random.between(0, (shape.width - 1) / 2);
    const std::vector<uint16_t> cost = random_costs(random, shape);
    ASSERT_EQ(brute_force(shape, cost, margin), search(shape, cost, margin, rows)) << shape.length << "x" << shape.width;
  }
}

TEST(SeamPath, IsTheBestOfLargerStrips) {
  RandomSource random;
  std::vector<int16_t> rows;
  for (int round = 0; round < 60; ++round) {
    const StripShape shape{16 * random.between(1, 12), random.between(5, 56)};
    const int margin = random.between(0, shape.width / 4);
    const std::vector<uint16_t> cost = random_costs(random, shape);
    ASSERT_EQ(row_by_row(shape, cost, margin), search(shape, cost, margin, rows)) << shape.length << "x" << shape.width;
  }
}

TEST(SeamPath, HoldsAtTheGreatestCosts) {
  std::vector<int16_t> rows;
  const StripShape shape{kMaxStripLength, kMaxStripWidth};
  const std::vector<uint16_t> cost(static_cast<size_t>(strip_samples(shape)), 65535);
  EXPECT_EQ(uint64_t{kMaxStripLength} * 65535, search(shape, cost, kMaxStripWidth / 4, rows));
}

TEST(SeamPath, IsTheSameEveryTimeAmongEquals) {
  const StripShape shape{64, 20};
  const std::vector<uint16_t> cost(static_cast<size_t>(strip_samples(shape)), 7);
  std::vector<int16_t> one, other;
  search(shape, cost, 3, one);
  search(shape, cost, 3, other);
  EXPECT_EQ(one, other);
  EXPECT_EQ(std::vector<int16_t>(64, one[0]), one) << "nothing to be gained by moving";
}

}  // namespace biseam::test
