#include "frame/seam/search.hpp"

#include <gtest/gtest.h>

#include "frame/blend/bands_fixture.hpp"

namespace biseam::test {
namespace {

TEST(SearchBytes, FindsTheSeamOfTheStages) {
  RandomSource random;
  int compared = 0;
  for (int round = 0; round < 150 && !HasFailure(); ++round) {
    const int feather = random.between(6, 20), findpath_width = random.between(5, 2 * feather);
    const float inv_scale = static_cast<float>(random.between(4, 8)) / 4;
    Band band(blend_config(random.between(0, 20), feather, 2 * random.between(10, 40), 1, findpath_width, inv_scale, 1),
              random);
    if (!can_search_bytes(*band.instance)) continue;
    overwrite(band.instance->mask, 0);
    band.copy_mask();
    for (int frame = 0; frame < 2; ++frame) {
      fill_image(*band.source1, random, 255);
      fill_image(*band.source2, random, 255);
      band.place_bytes();
      search_bytes(*band.instance);
      ASSERT_EQ(Status::ok, make_mask(*band.staged, band.sources));
      EXPECT_EQ(copy_of(band.staged->seam_mask).samples(), copy_of(band.instance->seam_mask).samples());
      EXPECT_EQ(copy_of(band.staged->mask).samples(), copy_of(band.instance->mask).samples());
    }
    ++compared;
  }
  EXPECT_GT(compared, 100);
}

TEST(CanSearchBytes, NotWhereStripsAreSmallerThanTheSearched) {
  for (const float inv_scale : {1.0f, 1.5f, 2.0f, 4.0f}) {
    TestInstance instance(blend_config(8, 16, 90, 2, 32, inv_scale, 1));
    EXPECT_TRUE(can_search_bytes(*instance)) << inv_scale;
  }
  TestInstance enlarged(blend_config(8, 16, 40, 2, 32, 0.5f, 1));
  EXPECT_FALSE(can_search_bytes(*enlarged));
}

}  // namespace
}  // namespace biseam::test
