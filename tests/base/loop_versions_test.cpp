#include "base/loop_versions.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "support/random_source.hpp"

namespace biseam::test {
namespace {

using AddRow = void(const uint8_t* a, const uint8_t* b, uint8_t* out, ptrdiff_t count) noexcept;

BISEAM_LOOP void add_row(const uint8_t* a, const uint8_t* b, uint8_t* out, ptrdiff_t count) noexcept {
  BISEAM_TURNS_APART
  for (ptrdiff_t i = 0; i < count; ++i) out[i] = static_cast<uint8_t>(a[i] + b[i]);
}

constexpr const Variants<AddRow>& kAddRow = loop_versions<add_row, AddRow>;

TEST(LoopVersions, EverySetOfTheArchitectureHasAVersionOfItsOwn) {
#if defined(BISEAM_X86_64)
  const std::vector<Isa> expected = {Isa::scalar, Isa::avx2, Isa::avx512};
#elif defined(BISEAM_ARM)
  const std::vector<Isa> expected = {Isa::scalar, Isa::neon};
#else
  const std::vector<Isa> expected = {Isa::scalar};
#endif
  std::vector<Isa> versions;
  for (const Isa isa : kIsas) {
    if (kAddRow.of(isa) == nullptr) continue;
    for (const Isa other : versions) EXPECT_NE(kAddRow.of(other), kAddRow.of(isa)) << name_of(other) << ", " << name_of(isa);
    versions.push_back(isa);
  }
  EXPECT_EQ(expected, versions);
}

TEST(LoopVersions, EveryVersionRunsTheLoop) {
  RandomSource random;
  for (size_t count = 0; count < 200; ++count) {
    std::vector<uint8_t> a(count), b(count), expected(count);
    for (size_t i = 0; i < count; ++i) {
      a[i] = random.byte();
      b[i] = random.byte();
      expected[i] = static_cast<uint8_t>(a[i] + b[i]);
    }
    for (const Isa isa : kIsas) {
      if (!can_run(isa) || kAddRow.of(isa) == nullptr) continue;
      std::vector<uint8_t> out(count);
      kAddRow.of(isa)(a.data(), b.data(), out.data(), static_cast<ptrdiff_t>(count));
      ASSERT_EQ(expected, out) << name_of(isa) << ", " << count;
    }
  }
}

}  // namespace
}  // namespace biseam::test
