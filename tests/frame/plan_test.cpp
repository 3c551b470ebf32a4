#include "frame/plan.hpp"

#include <gtest/gtest.h>

#include "support/engine_session.hpp"
#include "support/small_config.hpp"

namespace biseam::test {
namespace {

FramePlan plan_of(StitchConfig config) {
  EngineSession engine(config);
  return plan_frame(*engine);
}

void expect_by_bytes(bool expected, const StitchConfig& config) {
  const FramePlan plan = plan_of(config);
  for (const bool by_bytes : plan.by_bytes) EXPECT_EQ(expected, by_bytes);
}

TEST(FramePlan, UsualFramesGoByBytes) {
  for (const int format : {0, 1, 4, 5}) {
    for (const int search : {0, 1}) {
      StitchConfig config = small_config();
      config.in_yuv_type = config.out_yuv_type = format;
      config.findpath_enable = search;
      expect_by_bytes(true, config);
    }
  }
}

TEST(FramePlan, OddSizesAndLevelsLeftAloneGoByWholeImages) {
  StitchConfig odd_height = small_config(), odd_band = small_config(), many_levels = small_config();
  odd_height.in_h = odd_height.out_h[0] = 239;
  expect_by_bytes(false, odd_height);
  odd_band.trans_width = 33;
  expect_by_bytes(false, odd_band);
  many_levels.pyr_level = 8;
  expect_by_bytes(false, many_levels);
}

TEST(FramePlan, SearchesWithoutRoomGoByWholeImages) {
  StitchConfig enlarged = small_config();
  enlarged.inv_scale = 0.5f;
  expect_by_bytes(false, enlarged);
  enlarged.findpath_enable = 0;
  expect_by_bytes(true, enlarged);
}

TEST(FramePlan, ConvertersKnowPairsInOneOrder) {
  for (const int format : {0, 1, 4, 5}) {
    StitchConfig config = small_config();
    config.in_yuv_type = config.out_yuv_type = format;
    EXPECT_EQ(format & ~1, plan_of(config).format);
  }
}

TEST(FramePlan, PlanarAndPackedFormatsHaveNoPlaceInTheFrameRecords) {
  for (const int format : {2, 3, 6, 7, 8}) {
    StitchConfig config = small_config();
    config.in_yuv_type = format;
    EXPECT_FALSE(plan_of(config).can_be_stitched) << format;
    config.in_yuv_type = 0;
    config.out_yuv_type = format;
    EXPECT_EQ(format != 2 && format != 6, plan_of(config).can_be_stitched) << format;
  }
}

TEST(FramePlan, RowsAreThoseThatTablesAndPanoramaBothHave) {
  for (const int height : {200, 240, 300}) {
    StitchConfig config = small_config();
    config.out_h[0] = height;
    EXPECT_EQ(height < 240 ? height : 240, plan_of(config).rows);
  }
}

}  // namespace
}  // namespace biseam::test
