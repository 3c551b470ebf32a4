#include "base/isa.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include "base/variants.hpp"

namespace biseam {
namespace {

// Leaves the program with the set it had.
class IsaTest : public testing::Test {
 protected:
  ~IsaTest() override { limit_isa(before_); }

 private:
  const Isa before_ = isa_in_use();
};

int scalar_version() { return 0; }
int neon_version() { return 1; }
int avx2_version() { return 2; }
int avx512_version() { return 3; }

Isa best_of_the_host() {
  Isa best = Isa::scalar;
  for (const Isa isa : kIsas) {
    if (can_run(isa)) best = isa;
  }
  return best;
}

TEST_F(IsaTest, TheEnvironmentsSetIsInUseOrTheBest) {
  const char* wanted = std::getenv("BISEAM_ISA");
  EXPECT_STREQ(wanted != nullptr ? wanted : name_of(best_of_the_host()), name_of(isa_in_use()));
}

// A run on an emulated processor says what that one has.
TEST_F(IsaTest, TheHostHasWhatTheRunSaysOfIt) {
  const char* told = std::getenv("BISEAM_HOST_ISA");
  if (told != nullptr) {
    EXPECT_STREQ(told, name_of(best_of_the_host()));
  }
}

TEST_F(IsaTest, ScalarRunsEverywhere) {
  EXPECT_TRUE(can_run(Isa::scalar));
  EXPECT_TRUE(limit_isa(Isa::scalar));
  EXPECT_EQ(Isa::scalar, isa_in_use());
}

TEST_F(IsaTest, ASetTheHostLacksIsRefused) {
  for (const Isa isa : kIsas) {
    ASSERT_TRUE(limit_isa(Isa::scalar));
    EXPECT_EQ(can_run(isa), limit_isa(isa)) << name_of(isa);
    EXPECT_EQ(can_run(isa) ? isa : Isa::scalar, isa_in_use()) << name_of(isa);
  }
}

TEST_F(IsaTest, NoHostHasTheSetsOfBothArchitectures) { EXPECT_FALSE(can_run(Isa::neon) && can_run(Isa::avx2)); }

TEST_F(IsaTest, TheBestVersionUpToTheLimitIsTaken) {
  constexpr Variants<int()> all{scalar_version, neon_version, avx2_version, avx512_version};
  for (const Isa isa : kIsas) {
    if (limit_isa(isa)) {
      EXPECT_EQ(static_cast<int>(isa), all.best()()) << name_of(isa);
    }
  }
}

TEST_F(IsaTest, AMissingVersionIsReplacedByTheOneBelow) {
  constexpr Variants<int()> some{.scalar = scalar_version, .avx2 = avx2_version};
  for (const Isa isa : kIsas) {
    if (limit_isa(isa)) {
      EXPECT_EQ(isa >= Isa::avx2 ? 2 : 0, some.best()()) << name_of(isa);
    }
  }
}

TEST_F(IsaTest, AVersionIsFoundByItsSet) {
  constexpr Variants<int()> some{.scalar = scalar_version, .avx512 = avx512_version};
  EXPECT_EQ(&scalar_version, some.of(Isa::scalar));
  EXPECT_EQ(nullptr, some.of(Isa::neon));
  EXPECT_EQ(nullptr, some.of(Isa::avx2));
  EXPECT_EQ(&avx512_version, some.of(Isa::avx512));
}

}  // namespace
}  // namespace biseam
