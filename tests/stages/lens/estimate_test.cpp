#include "stages/lens/estimate.hpp"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>

#include "stages/lens/plain_lens.hpp"
#include "support/guarded.hpp"

namespace biseam::test {
namespace {

uint32_t reciprocal_bits(uint32_t operand) {
  return std::bit_cast<uint32_t>(reciprocal_estimate(std::bit_cast<float>(operand)));
}
uint32_t root_bits(uint32_t operand) {
  return std::bit_cast<uint32_t>(reciprocal_root_estimate(std::bit_cast<float>(operand)));
}

void expect_as_defined(uint32_t operand) {
  const float value = std::bit_cast<float>(operand);
  ASSERT_EQ(reciprocal_bits(operand), std::bit_cast<uint32_t>(plain_reciprocal_estimate(value))) << std::hex << operand;
  ASSERT_EQ(root_bits(operand), std::bit_cast<uint32_t>(plain_root_estimate(value))) << std::hex << operand;
}

TEST(Estimate, ReciprocalOfPowersOfTwoIsJustBelow) {
  EXPECT_EQ(reciprocal_estimate(1.0f), 511.0f / 512.0f);
  EXPECT_EQ(reciprocal_estimate(-4.0f), -511.0f / 2048.0f);
}

TEST(Estimate, RootOfOneIsJustBelowOne) { EXPECT_EQ(reciprocal_root_estimate(1.0f), 511.0f / 512.0f); }

TEST(Estimate, ZeroGivesSignedInfinity) {
  EXPECT_EQ(reciprocal_bits(0x00000000u), 0x7F800000u);
  EXPECT_EQ(reciprocal_bits(0x80000000u), 0xFF800000u);
  EXPECT_EQ(root_bits(0x00000000u), 0x7F800000u);
  EXPECT_EQ(root_bits(0x80000000u), 0xFF800000u);
}

TEST(Estimate, DenormalOperandsCountAsZero) {
  EXPECT_EQ(reciprocal_bits(0x00000001u), 0x7F800000u);
  EXPECT_EQ(reciprocal_bits(0x807FFFFFu), 0xFF800000u);
  EXPECT_EQ(root_bits(0x007FFFFFu), 0x7F800000u);
  EXPECT_EQ(root_bits(0x80000001u), 0xFF800000u);
}

TEST(Estimate, DenormalResultsAreFlushed) {
  EXPECT_EQ(reciprocal_bits(0x7E800000u), 0x00000000u);  // 2^126
  EXPECT_EQ(reciprocal_bits(0xFF7FFFFFu), 0x80000000u);
  EXPECT_EQ(reciprocal_bits(0x7E7FFFFFu) >> 23, 1u);  // just below 2^126: the least normal result
}

TEST(Estimate, InfinityGivesSignedZero) {
  EXPECT_EQ(reciprocal_bits(0x7F800000u), 0x00000000u);
  EXPECT_EQ(reciprocal_bits(0xFF800000u), 0x80000000u);
  EXPECT_EQ(root_bits(0x7F800000u), 0x00000000u);
}

TEST(Estimate, EveryNanGivesTheDefaultNan) {
  for (const uint32_t nan : {0x7F800001u, 0x7FC12345u, 0xFFC00000u, 0xFFFFFFFFu}) {
    EXPECT_EQ(reciprocal_bits(nan), 0x7FC00000u);
    EXPECT_EQ(root_bits(nan), 0x7FC00000u);
  }
}

TEST(Estimate, RootOfNegativeIsTheDefaultNan) {
  EXPECT_EQ(root_bits(0xBF800000u), 0x7FC00000u);
  EXPECT_EQ(root_bits(0xFF800000u), 0x7FC00000u);
}

// The results change only at steps of 2^15: both ends of every step, for all signs and exponents.
TEST(Estimate, EndsOfEveryStepAreAsDefined) {
  for (uint64_t step = 0; step <= 0xFFFFFFFFu; step += 1u << 15) {
    expect_as_defined(static_cast<uint32_t>(step));
    expect_as_defined(static_cast<uint32_t>(step + 0x7FFF));
    if (HasFatalFailure()) return;
  }
}

TEST(Estimate, RandomOperandsAreAsDefined) {
  const unsigned seed = 20403;
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  Random random(seed);
  for (int i = 0; i < 300000; ++i) {
    expect_as_defined(static_cast<uint32_t>(random()));
    if (HasFatalFailure()) return;
  }
}

}  // namespace
}  // namespace biseam::test
