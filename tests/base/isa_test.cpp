#include "base/isa.hpp"

#include <gtest/gtest.h>

#include <cstdlib>

#include "support/isas.hpp"

namespace biseam::test {
namespace {

class Isas : public KeptIsa {};

Isa best_of_the_host() {
  Isa best = Isa::scalar;
  for (const Isa isa : kIsas) {
    if (can_run(isa)) best = isa;
  }
  return best;
}

TEST_F(Isas, TheEnvironmentsSetIsInUseOrTheBest) {
  const char* wanted = std::getenv("BISEAM_ISA");
  EXPECT_STREQ(wanted != nullptr ? wanted : name_of(best_of_the_host()), name_of(isa_in_use()));
}

// A run on an emulated processor says what that one has.
TEST_F(Isas, TheHostHasWhatTheRunSaysOfIt) {
  const char* told = std::getenv("BISEAM_HOST_ISA");
  if (told != nullptr) {
    EXPECT_STREQ(told, name_of(best_of_the_host()));
  }
}

TEST_F(Isas, ScalarRunsEverywhere) {
  EXPECT_TRUE(can_run(Isa::scalar));
  EXPECT_TRUE(limit_isa(Isa::scalar));
  EXPECT_EQ(Isa::scalar, isa_in_use());
}

TEST_F(Isas, ASetTheHostLacksIsRefused) {
  for (const Isa isa : kIsas) {
    ASSERT_TRUE(limit_isa(Isa::scalar));
    EXPECT_EQ(can_run(isa), limit_isa(isa)) << name_of(isa);
    EXPECT_EQ(can_run(isa) ? isa : Isa::scalar, isa_in_use()) << name_of(isa);
  }
}

TEST_F(Isas, NoHostHasTheSetsOfBothArchitectures) { EXPECT_FALSE(can_run(Isa::neon) && can_run(Isa::avx2)); }

}  // namespace
}  // namespace biseam::test
