#include "frame/seam/cost_rows.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "support/guarded_block.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

// Rounded where it is kept: hosts may compute in wider numbers.
float squared(int32_t a, int32_t b) {
  const float difference = static_cast<float>(static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b)));
  return difference * difference;
}

TEST(DifferenceRow, AddsThreeSquaresInTheirOrder) {
  RandomSource random;
  for (int count = 0; count < 70; ++count) {
    std::vector<int32_t> a(static_cast<size_t>(count) + 2), b(a.size());
    for (std::vector<int32_t>* samples : {&a, &b}) {
      for (int32_t& sample : *samples) sample = static_cast<int32_t>(random.word()) >> random.between(0, 31);
    }
    GuardedBlock<float> sums(static_cast<size_t>(count));
    kDifferenceRow.best()(a.data(), b.data(), sums.data(), count);
    for (size_t i = 0; i < sums.size(); ++i) {
      const float two = squared(a[i], b[i]) + squared(a[i + 1], b[i + 1]);
      ASSERT_EQ(two + squared(a[i + 2], b[i + 2]), sums[i]) << i << " of " << count;
    }
  }
}

TEST(DifferenceRow, DifferencesWrapBeforeTheyAreSquared) {
  const int32_t a[3] = {INT32_MAX, INT32_MIN, 0}, b[3] = {INT32_MIN, INT32_MAX, 0};
  GuardedBlock<float> sums(1);
  kDifferenceRow.best()(a, b, sums.data(), 1);
  EXPECT_EQ(2.0f, sums[0]);  // -1 and 1
}

TEST(CostRow, AddsBothEndsAndThenOne) {
  RandomSource random;
  for (int count = 0; count < 70; ++count) {
    std::vector<float> first(static_cast<size_t>(count)), second(first.size());
    for (std::vector<float>* ends : {&first, &second}) {
      for (float& end : *ends) end = random.real_between(0.0f, random.between(0, 1) == 0 ? 200.0f : 6e19f);
    }
    GuardedBlock<float> costs(static_cast<size_t>(count));
    kCostRow.best()(first.data(), second.data(), costs.data(), count);
    for (size_t i = 0; i < costs.size(); ++i) {
      const float ends = first[i] + second[i];
      ASSERT_EQ(ends + 1.0f, costs[i]) << i << " of " << count;
    }
  }
}

}  // namespace
}  // namespace biseam::test
