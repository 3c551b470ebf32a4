#include "stages/lens/lens_strip.hpp"

#include <gtest/gtest.h>

#include <cstring>

#include "stages/lens/plain_lens.hpp"

namespace biseam::test {
namespace {

constexpr double kExactPi = 3.141592653589793;

TEST(LensStrip, RecordsEqualTheStripTable) {
  for (const int width : {640, 642, 641, 1922, 7}) {
    const StitchConfig config = lens_config(width, 321, 5);
    for (int strip = 0; strip < 3; ++strip) {
      const LensRecord expected = plain_lens(config, strip), lens = describe_strip(config, strip);
      EXPECT_EQ(std::memcmp(&lens, &expected, sizeof lens), 0) << width << ", strip " << strip;
    }
  }
}

TEST(LensStrip, WithoutFeatherTheStripsTileThePanorama) {
  for (int width = 4; width < 80; ++width) {
    const StitchConfig config = lens_config(width, 8, 0);
    const int quarter = width / 4, three_quarters = 3 * width / 4;
    EXPECT_EQ(describe_strip(config, 0).width, quarter);
    EXPECT_EQ(describe_strip(config, 1).width, three_quarters - quarter);
    EXPECT_EQ(describe_strip(config, 2).width, width - three_quarters);
  }
}

// Longitude of panorama column x: (x + 1) s, less pi for the middle strip and 2 pi for the right one.
TEST(LensStrip, EveryLensSeesLongitudesAroundItsAxis) {
  const StitchConfig config = lens_config(640, 320, 8);
  const int first_columns[] = {0, 160 - 8, 480 - 8};
  for (int strip = 0; strip < 3; ++strip) {
    const LensRecord lens = describe_strip(config, strip);
    for (const int x : {first_columns[strip], first_columns[strip] + lens.width - 1}) {
      const double longitude = -1.5707964 + (x - first_columns[strip] + 1) * lens.column_step + lens.column_offset;
      EXPECT_NEAR(longitude, (x + 1) * 2 * kExactPi / 640 - strip * kExactPi, 1e-5);
    }
  }
}

}  // namespace
}  // namespace biseam::test
