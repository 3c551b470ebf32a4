#include "stages/blend/module.hpp"

#include <gtest/gtest.h>

#include <thread>

#include "biseam/biseam.h"
#include "stages/blend/plain_band.hpp"

namespace biseam::test {
namespace {

// The seam mask of fresh sources by the stages of the seam search, each given exactly its inputs.
TestImage searched(Sources& sources, const BlendConfig& config, const BlendInstance& sizes) {
  const int width = sizes.scaled_findpath_width, height = sizes.scaled_height;
  TestImage* both[2] = {&sources.first, &sources.second};
  TestGray gray1(width, height), gray2(width, height), detail1(width, height), detail2(width, height);
  TestGray* grays[2] = {&gray1, &gray2};
  TestGray* details[2] = {&detail1, &detail2};
  for (int i = 0; i < 2; ++i) {
    TestImage strip(config.findpath_width, config.in_h);
    CreatFindPath(both[i]->record(), strip.record(), config.findpath_width, config.trans_width, i == 0 ? 1 : 0);
    TestImage shrunk = resized(strip, width, height);
    CvtColorToGray(shrunk.record(), grays[i]->record());
    GaussFilter(grays[i]->record(), details[i]->record());
  }
  TestImage mask(sizes.scaled_width, sizes.scaled_height);
  const int offset = (sizes.scaled_trans_width + sizes.scaled_band_width - sizes.scaled_findpath_width) / 2;
  EXPECT_EQ(0, GraphCut(offset, mask.record(), detail1.record(), detail2.record()));
  return mask;
}

TEST(BlendProc, FixedMaskAgainstTheDefinition) {
  RandomSource random;
  for (const BlendConfig& config : {blend_config(8, 6, 20, 3), blend_config(5, 6, 17, 2), blend_config(0, 9, 11, 4),
                                    blend_config(6, 0, 12, 1), blend_config(3, 2, 1, 2), blend_config(16, 32, 40, 5)}) {
    TestInstance instance(config);
    ASSERT_EQ(0, instance.created());
    Sources sources(random, config);
    const TestImage mask = left_half_mask(instance->width, instance->height);
    EXPECT_EQ(composed(sources, config, mask).samples(), instance.blend(sources.first, sources.second).samples())
        << instance->width << " x " << instance->height << ", " << config.pyr_level;
    EXPECT_EQ(mask.samples(), copy_of(instance->mask).samples());
  }
}

TEST(BlendProc, SeamSearchAgainstTheDefinition) {
  RandomSource random;
  for (const BlendConfig& config : {blend_config(8, 8, 24, 3, 12, 1.0f, 1), blend_config(9, 12, 31, 2, 20, 1.5f, -1),
                                    blend_config(0, 10, 21, 2, 20, 2.0f, 1), blend_config(8, 8, 24, 2, 12, 0.5f, 1),
                                    blend_config(16, 20, 120, 2, 40, 1.0f, 1), blend_config(16, 20, 150, 2, 40, 2.0f, 1)}) {
    TestInstance instance(config);
    ASSERT_EQ(0, instance.created());
    Sources sources(random, config);
    const TestImage seam_mask = searched(sources, config, *instance);
    const TestImage mask = resized(seam_mask, instance->width, instance->height);
    const TestImage output = instance.blend(sources.first, sources.second);
    EXPECT_EQ(seam_mask.samples(), copy_of(instance->seam_mask).samples());
    EXPECT_EQ(mask.samples(), copy_of(instance->mask).samples());
    EXPECT_EQ(composed(sources, config, mask).samples(), output.samples());
  }
}

TEST(BlendProc, FindpathOffNeverTouchesTheSeamSearchImages) {
  RandomSource random;
  TestInstance instance(blend_config(8, 6, 20, 3, 10, 2.0f, 0));
  Sources sources(random, instance.config());
  const auto gray_samples = [](const BlendGray& image) {
    return std::vector<int32_t>(image.data, image.data + image.width * image.height);
  };
  for (int i = 0; i < 2; ++i) {
    overwrite(instance->strip[i], 31);
    overwrite(instance->scaled_strip[i], 32);
    std::fill_n(instance->gray[i].data, 50, 33);
    std::fill_n(instance->detail[i].data, 50, 34);
  }
  overwrite(instance->seam_mask, 35);
  instance.blend(sources.first, sources.second);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(TestImage(10, 20, 3, 31).samples(), copy_of(instance->strip[i]).samples());
    EXPECT_EQ(TestImage(5, 10, 3, 32).samples(), copy_of(instance->scaled_strip[i]).samples());
    EXPECT_EQ(std::vector<int32_t>(50, 33), gray_samples(instance->gray[i]));
    EXPECT_EQ(std::vector<int32_t>(50, 34), gray_samples(instance->detail[i]));
  }
  EXPECT_EQ(TestImage(14, 10, 3, 35).samples(), copy_of(instance->seam_mask).samples());
}

TEST(BlendProc, FindpathOffWeightsColumnsLeftOfTheMiddleWith64) {
  RandomSource random;
  for (int trans_width : {8, 0}) {
    TestInstance instance(blend_config(trans_width, 5, 6, 1));
    Sources sources(random, instance.config());
    instance.blend(sources.first, sources.second);
    const TestImage mask = copy_of(instance->mask);
    for (int y = 0; y < 6; ++y) {
      for (int x = 0; x < instance->width; ++x) {
        for (int k = 0; k < 3; ++k) EXPECT_EQ(x < trans_width + 5 ? 64 : 0, mask.at(x, y, k)) << x << ", " << y;
      }
    }
  }
}

TEST(BlendProc, WeightsOfEarlierFramesStayInTheSeamMask) {
  RandomSource random;
  const BlendConfig config = blend_config(8, 10, 32, 2, 20, 1.0f, 1);
  TestInstance instance(config);
  TestImage expected(instance->scaled_width, instance->scaled_height);
  for (int frame = 0; frame < 4; ++frame) {
    Sources sources(random, config);
    const TestImage fresh = searched(sources, config, *instance);
    for (size_t i = 0; i < expected.samples().size(); ++i) {
      expected.samples()[i] = std::max(expected.samples()[i], fresh.samples()[i]);
    }
    const TestImage output = instance.blend(sources.first, sources.second);
    ASSERT_EQ(expected.samples(), copy_of(instance->seam_mask).samples()) << "frame " << frame;
    const TestImage mask = resized(expected, instance->width, instance->height);
    ASSERT_EQ(composed(sources, config, mask).samples(), output.samples()) << "frame " << frame;
  }
}

TEST(BlendProc, WeightsOfEarlierFramesStayInTheFixedMask) {
  RandomSource random;
  const BlendConfig config = blend_config(8, 6, 20, 2);
  TestInstance instance(config);
  TestImage mask = left_half_mask(instance->width, instance->height);
  for (int k = 0; k < 3; ++k) mask.at(25, 3, k) = 64;
  std::copy(mask.samples().begin(), mask.samples().end(), instance->mask.data[0]);
  for (int frame = 0; frame < 2; ++frame) {
    Sources sources(random, config);
    EXPECT_EQ(composed(sources, config, mask).samples(), instance.blend(sources.first, sources.second).samples());
    EXPECT_EQ(mask.samples(), copy_of(instance->mask).samples());
  }
}

TEST(BlendProc, ConfigurationMayEndAfterCreation) {
  RandomSource random;
  const BlendConfig config = blend_config(8, 8, 24, 3, 12, 1.0f, 1);
  TestInstance one(config), other(config);
  Sources sources(random, config);
  other.config() = {-1, -1, -1, -1, -1, -1.0f, 0};
  EXPECT_EQ(one.blend(sources.first, sources.second).samples(), other.blend(sources.first, sources.second).samples());
  other->config = nullptr;
  EXPECT_EQ(0, SetConfig_Blend(&*other));
  EXPECT_EQ(one.blend(sources.first, sources.second).samples(), other.blend(sources.first, sources.second).samples());
}

TEST(BlendProc, WithoutLevelsTheBandIsZeroAndNothingElseIsWritten) {
  RandomSource random;
  const BlendConfig config = blend_config(8, 6, 20, 0);
  TestInstance instance(config);
  ASSERT_EQ(0, instance.created());
  Sources sources(random, config);
  const TestImage output = instance.blend(sources.first, sources.second);
  EXPECT_EQ(TestImage(28, 20).samples(), output.samples());
  EXPECT_EQ(left_half_mask(28, 20).samples(), copy_of(instance->mask).samples());
}

TEST(BlendProc, StripsThatShrinkToNothingLeaveTheMaskAsItIs) {
  RandomSource random;
  const BlendConfig config = blend_config(8, 6, 20, 2, 8, 1e9f, 1);
  TestInstance instance(config);
  Sources sources(random, config);
  const TestImage output = instance.blend(sources.first, sources.second);
  EXPECT_EQ(composed(sources, config, TestImage(28, 20)).samples(), output.samples());
}

TEST(BlendProc, SourcesAreOnlyRead) {
  RandomSource random;
  const BlendConfig config = blend_config(8, 8, 24, 3, 12, 1.0f, 1);
  TestInstance instance(config);
  Sources sources(random, config);
  const Sources before = sources;
  instance.blend(sources.first, sources.second);
  EXPECT_EQ(before.first.samples(), sources.first.samples());
  EXPECT_EQ(before.second.samples(), sources.second.samples());
}

TEST(BlendMainPht, TwoInstancesOnTwoThreads) {
  RandomSource random;
  const BlendConfig config = blend_config(8, 8, 40, 3, 12, 1.0f, 1);
  TestInstance one(config), other(config), alone(config), alone_too(config);
  Sources sources(random, config), others(random, config);
  TestImage output(24 + 8, 40, 3, -777), other_output(24 + 8, 40, 3, -777);
  BlendThreadArgs args{&*one, sources.first.record(), sources.second.record(), output.record()};
  BlendThreadArgs other_args{&*other, others.first.record(), others.second.record(), other_output.record()};
  void* results[2] = {&args, &args};
  std::thread first([&] { results[0] = Blend_main_pht(&args); });
  std::thread second([&] { results[1] = Blend_main_pht(&other_args); });
  first.join();
  second.join();
  EXPECT_EQ(nullptr, results[0]);
  EXPECT_EQ(nullptr, results[1]);
  EXPECT_EQ(alone.blend(sources.first, sources.second).samples(), output.samples());
  EXPECT_EQ(alone_too.blend(others.first, others.second).samples(), other_output.samples());
}

}  // namespace
}  // namespace biseam::test
