#include "stages/lens/lens_entry.hpp"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include "stages/lens/plain_lens.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

TEST(RowLatitude, RunsFromOneStepBelowAPoleToTheOtherPole) {
  const LensRecord lens = plain_lens(lens_config(640, 320, 8), 0);
  const Latitude first = row_latitude(lens, 0), equator = row_latitude(lens, 159), last = row_latitude(lens, 319);
  EXPECT_NEAR(-1.0, first.sine, 1e-4);
  EXPECT_NEAR(std::sin(3.141592653589793 / 320), first.cosine, 1e-6);
  EXPECT_NEAR(0.0, equator.sine, 1e-6);
  EXPECT_EQ(1.0f, last.sine);
  EXPECT_NEAR(0.0, last.cosine, 1e-6);
}

TEST(ColumnLongitude, OnlyEveryFourthIsMultiplied) {
  LensRecord lens{};
  lens.column_step = 0.1f;
  lens.column_offset = 0.25f;
  const float fourth = -1.5707964f + 5.0f * 0.1f + 0.25f;
  EXPECT_EQ(fourth, column_longitude(lens, 4));
  EXPECT_EQ(fourth + 0.1f, column_longitude(lens, 5));
  EXPECT_EQ(fourth + 0.1f + 0.1f, column_longitude(lens, 6));
  EXPECT_EQ(fourth + 0.1f + 0.1f + 0.1f, column_longitude(lens, 7));
}

TEST(LensScale, IsTheFocalLengthInFocus) {
  LensRecord lens{};
  lens.focal = 301.5f;
  lens.focus = 1.015f;
  EXPECT_EQ(301.5f * 1.015f, lens_scale(lens));
}

TEST(OneNan, EveryNanHasTheSameBitsAndNumbersStay) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  for (const float value : {nan, -nan, std::bit_cast<float>(0x7F812345u), std::bit_cast<float>(0xFFFFFFFFu)}) {
    EXPECT_EQ(0x7FC00000u, std::bit_cast<uint32_t>(one_nan(value)));
  }
  for (const float value : {0.0f, -0.0f, 1.5f, -INFINITY}) {
    EXPECT_EQ(std::bit_cast<uint32_t>(value), std::bit_cast<uint32_t>(one_nan(value)));
  }
}

TEST(MapEntry, EqualsThePlainFormula) {
  RandomSource random;
  const StitchConfig config = lens_config(642, 321, 5);
  for (int strip = 0; strip < 3; ++strip) {
    const LensRecord lens = plain_lens(config, strip);
    for (int round = 0; round < 2000; ++round) {
      const int row = random.between(0, 320), column = random.between(0, lens.width - 1);
      const double longitude = column_longitude(lens, column);
      float entry[2];
      map_entry(lens, lens_scale(lens), row_latitude(lens, row), fast_sine(longitude), fast_cosine(longitude), entry);
      const SourcePosition expected = plain_entry(lens, row, column);
      ASSERT_EQ(0, std::memcmp(entry, &expected, sizeof entry)) << "strip " << strip << " row " << row << " column " << column;
    }
  }
}

}  // namespace
}  // namespace biseam::test
