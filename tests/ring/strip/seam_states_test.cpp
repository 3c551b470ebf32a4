#include "ring/strip/seam_states.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "support/isas.hpp"
#include "support/random_source.hpp"

namespace biseam::test {

namespace {

using namespace biseam::ring;

struct Search {
  StripShape shape;
  std::vector<uint16_t> cost;
  std::vector<int16_t> low, high;
  int first, last;

  SeamLimits limits() const { return {low.data(), high.data(), first, last}; }

  // The least sum of all paths from the first row that end in b at t, each of them walked back on its own.
  uint64_t least(int t, int b) const {
    if (b < low[static_cast<size_t>(t)] || b > high[static_cast<size_t>(t)]) return kUnreached;
    if (t == 0 && (b < first || b > last)) return kUnreached;
    const uint64_t own = cost[static_cast<size_t>(t * shape.width + b)];
    return t == 0 ? own : own + std::min({least(t - 1, b - 1), least(t - 1, b), least(t - 1, b + 1)});
  }
};

class SeamStatesOf : public testing::TestWithParam<Isa> {};

}  // namespace

TEST_P(SeamStatesOf, EveryRowAreTheLeastSumsOfAllPaths) {
  SeamStates* const fill = kSeamStates.of(GetParam());
  if (fill == nullptr) GTEST_SKIP() << "no version of its own";
  RandomSource random;
  for (int round = 0; round < 60; ++round) {
    Search search{{7, random.between(5, 40)}, {}, {}, {}, 0, 0};
    const int width = search.shape.width;
    const int most = random.between(0, 1) != 0 ? 65535 : 3;
    for (int i = 0; i < 7 * width; ++i) search.cost.push_back(static_cast<uint16_t>(random.between(0, most)));
    int low = random.between(0, width / 2), high = random.between(width / 2, width - 1);
    for (int t = 0; t < 7; ++t) {
      search.low.push_back(static_cast<int16_t>(low));
      search.high.push_back(static_cast<int16_t>(high));
      low = std::clamp(low + random.between(-1, 1), 0, width / 2);
      high = std::clamp(high + random.between(-1, 1), width / 2, width - 1);
    }
    search.first = random.between(search.low[0], search.high[0]);
    search.last = random.between(search.first, search.high[0]);
    std::vector<uint32_t> states(static_cast<size_t>(7 * state_stride(width)), 12345);
    fill(search.shape, search.cost.data(), search.limits(), states.data());
    for (int t = 0; t < 7; ++t) {
      const uint32_t* const row = states.data() + t * state_stride(width) + kStateMargin;
      for (int b = search.low[size_t(t)]; b <= search.high[size_t(t)]; ++b) {
        const uint64_t least = search.least(t, b);
        if (least < kUnreached) {
          ASSERT_EQ(least, row[b]) << t << ", " << b;
        } else {
          ASSERT_GE(row[b], kUnreached) << t << ", " << b;
        }
      }
      for (const int beyond :
           {search.low[size_t(t)] - 2, search.low[size_t(t)] - 1, search.high[size_t(t)] + 1, search.high[size_t(t)] + 2}) {
        ASSERT_EQ(kUnreached, row[beyond]) << t << ", " << beyond;
      }
    }
  }
}

// The dearest path of the longest strip stays below what is not reached.
TEST_P(SeamStatesOf, TheGreatestSumsStayReached) {
  SeamStates* const fill = kSeamStates.of(GetParam());
  if (fill == nullptr) GTEST_SKIP() << "no version of its own";
  const StripShape shape{kMaxStripLength, kMinStripWidth};
  const std::vector<uint16_t> cost(static_cast<size_t>(strip_samples(shape)), 65535);
  const std::vector<int16_t> low(kMaxStripLength, 0), high(kMaxStripLength, kMinStripWidth - 1);
  std::vector<uint32_t> states(static_cast<size_t>(kMaxStripLength * state_stride(kMinStripWidth)));
  fill(shape, cost.data(), {low.data(), high.data(), 0, kMinStripWidth - 1}, states.data());
  const uint32_t* const last = states.data() + (kMaxStripLength - 1) * state_stride(kMinStripWidth) + kStateMargin;
  for (int b = 0; b < kMinStripWidth; ++b) EXPECT_EQ(uint32_t{kMaxStripLength} * 65535, last[b]);
}

INSTANTIATE_TEST_SUITE_P(Isas, SeamStatesOf, testing::ValuesIn(isas_here()), isa_name);

}  // namespace biseam::test
