#include "base/variants.hpp"

#include <gtest/gtest.h>

#include "support/isas.hpp"

namespace biseam::test {
namespace {

class VariantsOfAKernel : public KeptIsa {};

int scalar_version() { return 0; }
int neon_version() { return 1; }
int avx2_version() { return 2; }
int avx512_version() { return 3; }

TEST_F(VariantsOfAKernel, TheBestVersionUpToTheLimitIsTaken) {
  constexpr Variants<int()> all{scalar_version, neon_version, avx2_version, avx512_version};
  for (const Isa isa : kIsas) {
    if (limit_isa(isa)) {
      EXPECT_EQ(static_cast<int>(isa), all.best()()) << name_of(isa);
    }
  }
}

TEST_F(VariantsOfAKernel, AMissingVersionIsReplacedByTheOneBelow) {
  constexpr Variants<int()> some{.scalar = scalar_version, .avx2 = avx2_version};
  for (const Isa isa : kIsas) {
    if (limit_isa(isa)) {
      EXPECT_EQ(isa >= Isa::avx2 ? 2 : 0, some.best()()) << name_of(isa);
    }
  }
}

TEST_F(VariantsOfAKernel, AVersionIsFoundByItsSet) {
  constexpr Variants<int()> some{.scalar = scalar_version, .avx512 = avx512_version};
  EXPECT_EQ(&scalar_version, some.of(Isa::scalar));
  EXPECT_EQ(nullptr, some.of(Isa::neon));
  EXPECT_EQ(nullptr, some.of(Isa::avx2));
  EXPECT_EQ(&avx512_version, some.of(Isa::avx512));
}

}  // namespace
}  // namespace biseam::test
