#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <vector>

#include "base/isa.hpp"
#include "frame/tables/lens_row_kernels.hpp"
#include "stages/lens/lens_strip.hpp"
#include "stages/lens/lens_table.hpp"
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

struct Size {
  int width, height, feather;
};

std::vector<float> build_all(const StitchConfig& config, Isa isa) {
  const Isa before = isa_in_use();
  limit_isa(isa);
  std::vector<float> entries[3];
  StitchEngine engine{};
  MAPTIHeader* const maps[] = {&engine.map_left, &engine.map_middle, &engine.map_right};
  for (int strip = 0; strip < 3; ++strip) {
    entries[strip].resize(2 * static_cast<std::size_t>(describe_strip(config, strip).width) * config.in_h);
    maps[strip]->entries = entries[strip].data();
  }
  build_tables(config, engine);
  limit_isa(before);
  for (int strip = 1; strip < 3; ++strip) entries[0].insert(entries[0].end(), entries[strip].begin(), entries[strip].end());
  return entries[0];
}

TEST(BuildTables, WholeTablesAreTheSameInAllVersions) {
  const unsigned seed = 20511;
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  Random random(seed);
  for (const Size& size : {Size{64, 32, 4}, {331, 77, 5}, {1920, 960, 32}, {2050, 601, 7}, {4444, 9, 0}, {28, 1300, 1}}) {
    SCOPED_TRACE(testing::Message() << size.width << " x " << size.height);
    StitchConfig config{};
    config.in_h = config.out_h[0] = size.height;
    config.out_w[0] = size.width;
    config.feather = size.feather;
    config.p0 = config.p1 = static_cast<float>(size.height) * pick(random, 0.1f, 1.0f);
    config.cx0 = config.cy0 = config.cx1 = config.cy1 = static_cast<float>(size.height - 1) / 2;
    config.change_focus = pick(random, 0.5f, 2.0f);
    for (float& entry : config.lens_matrix) entry = pick(random, -1.5f, 1.5f);
    const std::vector<float> expected = build_all(config, Isa::scalar);
    for (const Isa isa : versions()) {
      const std::vector<float> actual = build_all(config, isa);
      EXPECT_EQ(std::memcmp(expected.data(), actual.data(), 4 * expected.size()), 0) << name_of(isa);
    }
  }
}

}  // namespace
}  // namespace biseam::test
