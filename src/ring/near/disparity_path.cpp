#include "ring/near/disparity_path.hpp"

#include "base/loop_versions.hpp"

namespace biseam::ring {

namespace {

constexpr int32_t kUnreached = 1 << 28;
static_assert(int64_t{kMostSearchLength} * 65536 * 2 < kUnreached);

BISEAM_LOOP int32_t lesser(int32_t a, int32_t b) { return a < b ? a : b; }

BISEAM_LOOP void extend_paths(const PathCosts* costs, int count, int disparities, PathSums& sums, int column,
                              PathCosts* recorded) noexcept {
  for (int t = 0; t < count; ++t) {
    int32_t jumped[kPathLanes];
    for (int s = 0; s < kPathLanes; ++s) jumped[s] = sums.values[0][s];
    for (int d = 1; d < disparities; ++d) {
      for (int s = 0; s < kPathLanes; ++s) {
        jumped[s] = lesser(jumped[s], sums.values[d][s]);
        sums.values[d][s] = lesser(sums.values[d][s], sums.values[d - 1][s] + kStepCost);
      }
    }
    for (int d = disparities - 2; d >= 0; --d) {
      for (int s = 0; s < kPathLanes; ++s) sums.values[d][s] = lesser(sums.values[d][s], sums.values[d + 1][s] + kStepCost);
    }
    for (int d = 0; d < disparities; ++d) {
      const int32_t cost = costs[t].values[d];
      for (int s = 0; s < kPathLanes; ++s) sums.values[d][s] = lesser(sums.values[d][s], jumped[s] + kJumpCost) + cost;
    }
    if (recorded == nullptr) continue;
    for (int d = 0; d < disparities; ++d) recorded[t].values[d] = sums.values[d][column];
  }
}

void begin(const PathCosts& costs, int disparities, PathSums& sums) {
  for (int d = 0; d < kPathLanes; ++d) {
    for (int s = 0; s < kPathLanes; ++s) sums.values[d][s] = d == s && d < disparities ? costs.values[d] : kUnreached;
  }
}

int32_t way(int from, int to) {
  const int32_t cost = (from < to ? to - from : from - to) * kStepCost;
  return cost < kJumpCost ? cost : kJumpCost;
}

// The disparity from which a path came to one, by the sums before.
template <class SumOf>
int before(const SumOf& sum_of, int to, int disparities) {
  int best = 0;
  for (int d = 1; d < disparities; ++d) {
    if (sum_of(d) + way(d, to) < sum_of(best) + way(best, to)) best = d;
  }
  return best;
}

}  // namespace

constinit const Variants<ExtendPaths> kExtendPaths = loop_versions<extend_paths, ExtendPaths>;

void find_disparities(const PathCosts* costs, int length, int disparities, PathCosts* memory, int8_t* path) noexcept {
  PathSums sums;
  begin(costs[0], disparities, sums);
  kExtendPaths.best()(costs + 1, length - 1, disparities, sums, 0, nullptr);
  int first = 0;
  int32_t least = INT32_MAX;
  for (int s = 0; s < disparities; ++s) {
    const auto sum_of = [&](int d) { return sums.values[d][s]; };
    const int last = before(sum_of, s, disparities);
    const int32_t sum = sum_of(last) + way(last, s);
    if (sum < least) least = sum, first = s;
  }
  begin(costs[0], disparities, sums);
  for (int d = 0; d < disparities; ++d) memory[0].values[d] = sums.values[d][first];
  kExtendPaths.best()(costs + 1, length - 1, disparities, sums, first, memory + 1);
  int next = first;
  for (int t = length - 1; t >= 0; --t) {
    next = before([&](int d) { return memory[t].values[d]; }, next, disparities);
    path[t] = static_cast<int8_t>(next);
  }
}

}  // namespace biseam::ring
