#include "frame/tables/lens_row.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <vector>

#include "base/isa.hpp"
#include "support/guarded.hpp"

namespace biseam::test {
namespace {

// The versions that BISEAM_ISA leaves, or all.
std::vector<Isa> versions() {
  std::vector<Isa> found;
  for (const Isa isa : kIsas) {
    if (isa <= isa_in_use() && kMapRow.of(isa) != nullptr && can_run(isa)) found.push_back(isa);
  }
  return found;
}

// Entries of pixels seen along given rays, each in bits.
std::vector<float> entries_of(MapRow* map, float y, const std::vector<uint32_t>& x, const std::vector<uint32_t>& z) {
  std::vector<double> sines, cosines;
  for (std::size_t i = 0; i < x.size(); ++i) {
    sines.push_back(static_cast<double>(std::bit_cast<float>(x[i])));
    cosines.push_back(static_cast<double>(std::bit_cast<float>(z[i])));
  }
  LensRecord lens{};
  lens.matrix[0] = lens.matrix[4] = 1.0f;
  std::vector<float> entries(2 * x.size());
  map(lens, 1.0f, {y, 1.0f}, sines.data(), cosines.data(), static_cast<int>(x.size()), entries.data());
  return entries;
}

void expect_versions_alike(float y, const std::vector<uint32_t>& x, const std::vector<uint32_t>& z) {
  const std::vector<float> expected = entries_of(kMapRow.scalar, y, x, z);
  for (const Isa isa : versions()) {
    const std::vector<float> actual = entries_of(kMapRow.of(isa), y, x, z);
    for (std::size_t i = 0; i < x.size(); ++i) {
      ASSERT_EQ(std::memcmp(&expected[2 * i], &actual[2 * i], 8), 0)
          << name_of(isa) << std::hex << ": " << x[i] << ", " << z[i];
    }
  }
}

// Both ends of every step of the reciprocal, for all signs and exponents; the radius is such that no entry overflows.
TEST(MapRow, EveryStepOfTheReciprocalIsTheSameInAllVersions) {
  std::vector<uint32_t> x, z;
  for (uint64_t step = 0; step <= 0xFFFFFFFFu; step += 1u << 15) {
    for (const uint64_t operand : {step, step + 0x7FFF}) {
      z.push_back(static_cast<uint32_t>(operand));
      const uint32_t exponent = static_cast<uint32_t>(operand) >> 23 & 0xFF;
      x.push_back(std::clamp(exponent, 70u, 185u) << 23 | 0x00345678);  // the tangent is about one where it can be
    }
  }
  expect_versions_alike(0.0f, x, z);
}

// Squares of x in every step of the root and a bit off either end, for the exponents that squares have.
TEST(MapRow, EveryStepOfTheRootIsTheSameInAllVersions) {
  std::vector<uint32_t> x, z;
  for (uint32_t exponent = 60; exponent < 195; ++exponent) {
    for (uint32_t fraction = 0; fraction < 1u << 23; fraction += 1u << 13) {
      for (const uint32_t off : {0u, 1u, 0x1FFFu}) {
        x.push_back(exponent << 23 | (fraction + off));
        z.push_back(0x3F800000u);
      }
    }
  }
  expect_versions_alike(0.0f, x, z);
}

// Tangents densely around all steps of the arctangent table, on all four sides.
TEST(MapRow, EveryStepOfTheArctangentIsTheSameInAllVersions) {
  std::vector<uint32_t> x, z;
  for (uint32_t i = 0; i < 300000; ++i) {
    x.push_back(std::bit_cast<uint32_t>(1.0f + static_cast<float>(i % 512) / 512.0f));
    z.push_back(std::bit_cast<uint32_t>(0.25f + static_cast<float>(i) / 50000.0f) ^ (i & 1) << 31);
  }
  expect_versions_alike(0.0f, x, z);
  expect_versions_alike(-0.75f, x, z);
}

// All products of two estimates: tangents of exactly 255 and 1 among them, next to which table and formula change.
TEST(MapRow, EveryPairOfEstimatesIsTheSameInAllVersions) {
  for (const uint32_t exponent : {118u, 119u, 126u, 127u, 134u}) {
    std::vector<uint32_t> x, z;
    for (uint32_t i = 0; i < 256; ++i) {
      for (uint32_t k = 0; k < 256; ++k) {
        x.push_back(0x3F800000u + (i << 15));  // squares in [1, 4)
        z.push_back(exponent << 23 | k << 15);
      }
    }
    expect_versions_alike(0.0f, x, z);
  }
}

}  // namespace
}  // namespace biseam::test
