#include "frame/blend/byte_band.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "biseam/biseam.h"
#include "frame/blend/workspace.hpp"
#include "frame/seam/search.hpp"
#include "stages/blend/blend_fixture.hpp"
#include "stages/blend/module.hpp"

namespace biseam::test {
namespace {

constexpr int32_t kOld = -777;

// Any samples of the range, its ends only, or vertical stripes of the ends, which give the largest details.
void fill_image(const BlendImage& image, RandomSource& random, int most) {
  const int kind = random.between(0, 2), shift = random.between(0, 5), start = random.between(0, 1);
  const int64_t count = int64_t{image.height} * image.stride;
  for (int64_t i = 0; i < count; ++i) {
    const int column = static_cast<int>(i % image.stride) / 3;
    image.data[0][i] = kind == 0   ? random.between(0, most)
                       : kind == 1 ? most * random.between(0, 1)
                                   : most * ((column >> shift & 1) ^ start);
  }
}

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

// Two instances with the same sources and mask: one for bytes, one for the stages.
struct Band {
  Band(const BlendConfig& config, RandomSource& random_source)
      : random(random_source), instance(config), staged(config), source1(config.band_width, config.in_h), source2(source1) {
    fill_image(*source1, random, 255);
    fill_image(*source2, random, 255);
    fill_image(instance->mask, random, 64);
    copy_mask();
  }
  void copy_mask() {
    const BlendImage& mask = instance->mask;
    std::copy_n(mask.data[0], int64_t{mask.height} * mask.stride, staged->mask.data[0]);
  }
  bool goes_by_bytes() { return can_blend_bytes(*instance); }

  // What frames leave in the levels does not count.  The sources come to lie where a conversion puts them.
  void place_bytes() {
    for (int i = 0; i < 4; ++i) {
      for (int k = 0; k <= instance->pyr_level; ++k) {
        overwrite(level_of(*instance, i, k), static_cast<int32_t>(random.word()));
      }
    }
    TestImage* const both[2] = {&source1, &source2};
    for (const Pyramids i : {kSource1, kSource2}) {
      TestImage widened(instance->width, instance->height);
      CreatBlend(both[i]->record(), widened.record(), instance->trans_width, i == kSource1 ? 1 : 0);
      std::copy(widened.samples().begin(), widened.samples().end(), Workspace(*instance).level(i, 0).data);
    }
  }
  bool blend(Taken& taken) {
    place_bytes();
    return blend_bytes(*instance, taken.sink());
  }
  std::vector<int32_t> by_stages() {
    TestImage output(instance->width, instance->height, 3, kOld);
    EXPECT_EQ(Status::ok, blend_under_mask(*staged, sources, *output));
    return output.samples();
  }

  RandomSource& random;
  TestInstance instance, staged;
  TestImage source1, source2;
  const BlendImage* const sources[2] = {source1.record(), source2.record()};
};

void expect_stages_result(Band& band) {
  const TestImage mask = copy_of(band.instance->mask);
  Taken taken{{}, band.instance->width};
  ASSERT_TRUE(band.blend(taken));
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
    EXPECT_FALSE(band.blend(taken));
    EXPECT_EQ(0, taken.rows);
  }
}

TEST(BlendBytes, SearchesAsTheStagesDo) {
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
