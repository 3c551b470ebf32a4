#include "base/align.hpp"

#include <gtest/gtest.h>

#include <cstdint>

#include "biseam/biseam.h"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

TEST(AlignSize, RoundsUpToThePowerOfTwo) {
  EXPECT_EQ(16u, AlignSize(5, 16));
  EXPECT_EQ(16u, AlignSize(16, 16));
  EXPECT_EQ(32u, AlignSize(17, 16));
  EXPECT_EQ(0u, AlignSize(0, 16));
  EXPECT_EQ(7u, AlignSize(7, 1));
}

TEST(AlignSize, RefusesWhatIsNoPowerOfTwo) {
  for (int align : {12, 3, 24, -16, 0}) EXPECT_EQ(0xFFFFFFFFu, AlignSize(5, align)) << align;
}

TEST(AlignSize, CountsModulo32Bits) {
  EXPECT_EQ(0u, AlignSize(0xFFFFFFF1u, 16));
  EXPECT_EQ(0xFFFFFFF0u, AlignSize(0xFFFFFFF0u, 16));
}

TEST(AlignSize, RandomSizesComeOutAsTheNextMultiple) {
  RandomSource random;
  for (int i = 0; i < 2000; ++i) {
    const uint32_t size = random.word() >> 1;
    const int bits = random.between(0, 20);
    const uint64_t unit = uint64_t{1} << bits;
    EXPECT_EQ((size + unit - 1) / unit * unit, AlignSize(size, 1 << bits));
  }
}

TEST(AlignPtrFloat, RoundsAddressesUp) {
  alignas(64) float block[64];
  for (int i = 0; i < 16; ++i) {
    const uintptr_t aligned = reinterpret_cast<uintptr_t>(AlignPtr_float(block + i, 64));
    EXPECT_EQ(reinterpret_cast<uintptr_t>(block) + (i == 0 ? 0u : 64u), aligned);
  }
  EXPECT_EQ(block + 3, AlignPtr_float(block + 3, 4));
}

TEST(AlignPtrFloat, GivesNullForWhatIsNoPowerOfTwo) {
  float value = 0;
  EXPECT_EQ(nullptr, AlignPtr_float(&value, 12));
  EXPECT_EQ(nullptr, AlignPtr_float(&value, 0));
}

}  // namespace
}  // namespace biseam::test
