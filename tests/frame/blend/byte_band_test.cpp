#include "frame/blend/byte_band.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "frame/blend/bands_fixture.hpp"

namespace biseam::test {
namespace {

// What a sink has got, in order.
struct Taken {
  std::vector<int32_t> samples;
  int width, rows = 0;

  static void take(void* context, int32_t* rows, int y) {
    Taken& self = *static_cast<Taken*>(context);
    EXPECT_EQ(self.rows, y);
    self.rows += 2;
    self.samples.insert(self.samples.end(), rows, rows + ptrdiff_t{6} * self.width);
    std::fill_n(rows, ptrdiff_t{6} * self.width, kOld);  // nobody needs them any more
  }
  RowSink sink() { return {take, this}; }
};

bool blend(Band& band, Taken& taken) {
  band.place_bytes();
  return blend_bytes(*band.instance, taken.sink());
}

void expect_stages_result(Band& band) {
  const TestImage mask = copy_of(band.instance->mask);
  Taken taken{{}, band.instance->width};
  ASSERT_TRUE(blend(band, taken));
  EXPECT_EQ(band.instance->height, taken.rows);
  EXPECT_EQ(band.by_stages(), taken.samples) << band.instance->band_width << " + " << band.instance->trans_width << " x "
                                             << band.instance->height << ", levels " << band.instance->pyr_level;
  EXPECT_EQ(mask.samples(), copy_of(band.instance->mask).samples());
}

TEST(BlendBytes, EqualsTheStagesAtEverySize) {
  RandomSource random;
  int compared = 0;
  for (int round = 0; round < 600 && !HasFailure(); ++round) {
    const int t = random.between(0, 30), width = std::max(1, t + random.between(0, 40));
    Band band({t, 0, width, random.between(1, 60), random.between(1, 7), 1, 0}, random);
    if (!band.goes_by_bytes()) continue;
    expect_stages_result(band);
    ++compared;
  }
  EXPECT_GT(compared, 100);
}

TEST(BlendBytes, EqualsTheStagesAtTheUsualSize) {
  RandomSource random;
  for (int round = 0; round < 5; ++round) {
    Band band(blend_config(64, 32, 2 * random.between(50, 100), 5), random);
    ASSERT_TRUE(band.goes_by_bytes());
    expect_stages_result(band);
  }
}

TEST(BlendBytes, NarrowestBandsHaveScratchEnough) {
  // Scratch lies where the blended level 0 would be; samples behind it stay.
  RandomSource random;
  int compared = 0;
  for (int width = 1; width < 12; ++width) {
    for (int height = 6; height < 80; height += 2) {
      Band band({0, 0, width, height, 1, 1, 0}, random);
      if (!band.goes_by_bytes()) continue;
      const BlendImage& level = band.instance->levels[kBlended][0];
      TestImage samples(level.width, level.height + 20, 3, kOld);
      const Taken none{};
      band.place_bytes();
      band.instance->levels[kBlended][0].data[0] = samples.record()->data[0];
      Taken taken{{}, level.width};
      ASSERT_TRUE(blend_bytes(*band.instance, taken.sink()));
      const auto behind = samples.samples().begin() + int64_t{level.height} * level.stride;
      ASSERT_TRUE(std::all_of(behind, samples.samples().end(), [](int32_t sample) { return sample == kOld; }));
      ASSERT_EQ(band.by_stages(), taken.samples) << width << " x " << height;
      ++compared;
    }
  }
  EXPECT_GT(compared, 50);
}

TEST(BlendBytes, RefusesWeightsOutOfRangeWhereverTheyLie) {
  RandomSource random;
  for (int round = 0; round < 200; ++round) {
    Band band(blend_config(8, 6, 40, 3), random);
    const int32_t weights[] = {65, -1, INT32_MIN, INT32_MAX, 256, 1 << 16};
    const BlendImage& mask = band.instance->mask;
    mask.data[0][random.between(0, mask.height * mask.stride - 1)] = weights[round % 6];
    Taken taken{{}, band.instance->width};
    EXPECT_FALSE(blend(band, taken));
    EXPECT_EQ(0, taken.rows);
  }
}

bool goes_by_bytes(const BlendConfig& config) {
  const TestInstance instance(config);
  return can_blend_bytes(*const_cast<TestInstance&>(instance));
}

TEST(CanBlendBytes, UsualBands) {
  EXPECT_TRUE(goes_by_bytes(blend_config(8, 6, 24, 2)));
  EXPECT_TRUE(goes_by_bytes(blend_config(64, 32, 64, 5)));
}

TEST(CanBlendBytes, NotWithoutLevelsOrWithOddHeights) {
  EXPECT_FALSE(goes_by_bytes(blend_config(8, 6, 24, 0)));
  EXPECT_FALSE(goes_by_bytes(blend_config(8, 6, 25, 2)));
}

TEST(CanBlendBytes, NotWithLevelsThatReductionsLeaveAlone) {
  // 28 x 16, 14 x 8, 7 x 4, 4 x 2: both even and one of them 2, which is not reduced and not expanded to.
  for (int levels : {3, 4, 5}) EXPECT_EQ(levels == 3, goes_by_bytes(blend_config(8, 6, 16, levels))) << levels;
}

TEST(CanBlendBytes, NotWhereScratchRowsFindNoRoom) {
  for (int height : {2, 4, 6, 8, 10, 12}) EXPECT_EQ(height > 8, goes_by_bytes(blend_config(9, 7, height, 1))) << height;
}

TEST(CanBlendBytes, NotWithATransitionWiderThanTheSource) {
  EXPECT_FALSE(goes_by_bytes({30, 0, 20, 24, 2, 1, 0}));
  EXPECT_TRUE(goes_by_bytes({20, 0, 20, 24, 2, 1, 0}));
}

}  // namespace
}  // namespace biseam::test
