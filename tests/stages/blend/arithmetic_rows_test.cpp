#include "stages/blend/arithmetic_rows.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "support/guarded_block.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

// Full-range rows of one exact block each.
std::vector<int32_t> random_row(RandomSource& random, int count) {
  std::vector<int32_t> row(count);
  for (int32_t& sample : row) sample = static_cast<int32_t>(random.word());
  return row;
}

int32_t wrapped(int64_t value) { return static_cast<int32_t>(static_cast<uint64_t>(value)); }

TEST(ArithmeticRows, EveryCountWraps) {
  RandomSource random;
  for (int count = 0; count < 40; ++count) {
    const std::vector<int32_t> a = random_row(random, count), b = random_row(random, count);
    GuardedBlock<int32_t> sum(count), difference(count), product(count), filled(count);
    add_row(a.data(), b.data(), sum.data(), count);
    subtract_row(a.data(), b.data(), difference.data(), count);
    multiply_row(a.data(), b.data(), product.data(), count);
    fill_row(filled.data(), -5, count);
    for (int i = 0; i < count; ++i) {
      EXPECT_EQ(wrapped(int64_t{a[i]} + b[i]), sum[i]);
      EXPECT_EQ(wrapped(int64_t{a[i]} - b[i]), difference[i]);
      EXPECT_EQ(wrapped(int64_t{a[i]} * b[i]), product[i]);
      EXPECT_EQ(-5, filled[i]);
    }
  }
}

TEST(ArithmeticRows, ResultMayReplaceAnOperand) {
  RandomSource random;
  const std::vector<int32_t> a = random_row(random, 37), b = random_row(random, 37);
  for (const auto row : {add_row, subtract_row, multiply_row}) {
    std::vector<int32_t> apart(37), first = a, second = b;
    row(a.data(), b.data(), apart.data(), 37);
    row(first.data(), b.data(), first.data(), 37);
    row(a.data(), second.data(), second.data(), 37);
    EXPECT_EQ(apart, first);
    EXPECT_EQ(apart, second);
  }
}

TEST(MixRow, LeavesBothProductsAndTheirSum) {
  RandomSource random;
  for (int count = 0; count < 40; ++count) {
    const std::vector<int32_t> a = random_row(random, count), b = random_row(random, count), mask = random_row(random, count);
    GuardedBlock<int32_t> product_a(count), product_b(count), out(count);
    for (int i = 0; i < count; ++i) {
      product_a[i] = a[i];
      product_b[i] = b[i];
    }
    mix_row(product_a.data(), product_b.data(), mask.data(), out.data(), count);
    for (int i = 0; i < count; ++i) {
      EXPECT_EQ(wrapped(int64_t{a[i]} * mask[i]), product_a[i]);
      EXPECT_EQ(wrapped(int64_t{b[i]} * wrapped(int64_t{64} - mask[i])), product_b[i]);
      EXPECT_EQ(wrapped(int64_t{product_a[i]} + product_b[i]), out[i]);
    }
  }
}

}  // namespace
}  // namespace biseam::test
