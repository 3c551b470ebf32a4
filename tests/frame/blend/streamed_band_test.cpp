#include "frame/blend/streamed_band.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "biseam/biseam.h"
#include "stages/blend/blend_fixture.hpp"

namespace biseam::test {
namespace {

constexpr int32_t kOld = -777;

// What fills the sources and the mask.
enum class Content { pictures, any_samples, ends };

int32_t sample_of(RandomSource& random, Content content) {
  if (content == Content::pictures) return random.between(0, 255);
  if (content == Content::any_samples) return static_cast<int32_t>(random.word());
  return random.between(0, 1) != 0 ? INT32_MAX : INT32_MIN;
}

void fill_image(BlendImage& image, RandomSource& random, Content content) {
  for (int64_t i = 0; i < int64_t{image.height} * image.stride; ++i) image.data[0][i] = sample_of(random, content);
}

void fill_mask(BlendImage& mask, RandomSource& random) {
  const int kind = random.between(0, 2);  // cut, soft, any samples
  for (int64_t i = 0; i < int64_t{mask.height} * mask.stride; ++i) {
    mask.data[0][i] = kind == 0   ? 64 * random.between(0, 1)
                      : kind == 1 ? random.between(0, 64)
                                  : static_cast<int32_t>(random.word());
  }
}

// The stages, one after the other, as a host may call them.
void blend_by_hand(BlendInstance& instance, BlendImage& source1, BlendImage& source2, BlendImage& output) {
  BlendImage* const sources[2] = {&source1, &source2};
  for (int i = 0; i < 2; ++i) {
    CreatBlend(sources[i], &instance.band[i], instance.trans_width, i == 0 ? 1 : 0);
    BuildLaplacianPyramid(&instance.band[i], &instance.levels[i], &instance.top[i], instance.pyr_level);
  }
  BuildGuassPyramid(&instance.mask, &instance.levels[2], &instance.top[2], instance.pyr_level);
  BlendLapPyrs(&instance.levels[0], &instance.top[0], &instance.levels[1], &instance.top[1], &instance.levels[2],
               &instance.top[2], &instance.levels[3], &instance.top[3], instance.pyr_level);
  ReconstructImage(&instance.top[3], &instance.levels[3], &output, instance.pyr_level);
}

TestImage by_hand(TestInstance& staged, const BlendInstance& instance, TestImage& source1, TestImage& source2) {
  std::copy_n(instance.mask.data[0], int64_t{instance.mask.height} * instance.mask.stride, staged->mask.data[0]);
  TestImage output(instance.width, instance.height, 3, kOld);
  blend_by_hand(*staged, *source1, *source2, *output);
  return output;
}

bool streams(const BlendInstance& instance, TestImage& source1, TestImage& source2, const BlendImage& output) {
  const BlendImage* const sources[2] = {source1.record(), source2.record()};
  return can_be_streamed(instance, sources, output);
}

// Some frames on one instance, against the stages on another one.  How many could be streamed.
int compare_frames(const BlendConfig& config, RandomSource& random, Content content, int frames) {
  TestInstance instance(config), staged(config);
  TestImage source1(config.band_width, config.in_h), source2 = source1;
  const BlendImage* const sources[2] = {source1.record(), source2.record()};
  int streamed = 0;
  for (int frame = 0; frame < frames && !::testing::Test::HasFailure(); ++frame) {
    fill_image(*source1, random, content);
    fill_image(*source2, random, content);
    fill_mask(instance->mask, random);
    TestImage output(instance->width, instance->height, 3, kOld);
    if (can_be_streamed(*instance, sources, *output)) {
      // Under a mask that is random in both halves.
      const TestImage before = copy_of(instance->mask), expected = by_hand(staged, *instance, source1, source2);
      blend_streamed(*instance, sources, *output);
      EXPECT_EQ(expected.samples(), output.samples());
      EXPECT_EQ(before.samples(), copy_of(instance->mask).samples());
      ++streamed;
    }
    output = instance.blend(source1, source2);
    EXPECT_EQ(by_hand(staged, *instance, source1, source2).samples(), output.samples())
        << instance->width << " x " << instance->height << ", transition " << config.trans_width << ", levels "
        << config.pyr_level << ", frame " << frame;
  }
  return streamed;
}

TEST(BlendStreamed, EqualsTheStagesAtEverySizeAndContent) {
  RandomSource random;
  int streamed = 0, staged = 0;
  for (int round = 0; round < 500 && !HasFailure(); ++round) {
    const BlendConfig config =
        blend_config(random.between(0, 20), random.between(0, 20), random.between(1, 60), random.between(0, 7));
    if (config.band_width < 1) continue;
    const Content content = static_cast<Content>(random.between(0, 2));
    const int frames = random.between(1, 3);
    const int done = compare_frames(config, random, content, frames);
    streamed += done;
    staged += frames - done;
  }
  EXPECT_GT(streamed, 100);
  EXPECT_GT(staged, 100);
}

TEST(BlendStreamed, EqualsTheStagesAtOddWidths) {
  // band_width is the caller's: with an odd one the band is odd as well.
  RandomSource random;
  int streamed = 0;
  for (int width = 3; width < 70; width += 2) {
    const int t = random.between(0, width / 2);
    const BlendConfig config{t, 0, width - t, random.between(15, 50), random.between(1, 6), 1, 0};
    streamed += compare_frames(config, random, Content::any_samples, 1);
  }
  EXPECT_GT(streamed, 20);
}

// An instance with sources, and another one for the stages.
struct Case {
  explicit Case(const BlendConfig& config = blend_config(8, 6, 24, 2))
      : instance(config),
        staged(config),
        source1(config.band_width, config.in_h),
        source2(source1),
        output(instance->width, instance->height, 3, kOld) {
    source1.randomize(random, 0, 255);
    source2.randomize(random, 0, 255);
  }
  bool streams() { return test::streams(*instance, source1, source2, *output); }
  void expect_stages_result() {
    EXPECT_EQ(0, Blend_Proc(&*instance, source1.record(), source2.record(), output.record()));
    EXPECT_EQ(by_hand(staged, *instance, source1, source2).samples(), output.samples());
  }

  RandomSource random;
  TestInstance instance, staged;
  TestImage source1, source2, output;
};

TEST(BlendStreamed, UsualBandsAreStreamed) {
  Case usual, large(blend_config(64, 32, 64, 5));
  EXPECT_TRUE(usual.streams());
  usual.expect_stages_result();
  EXPECT_TRUE(large.streams());
  large.expect_stages_result();
}

TEST(BlendStreamed, LevelsMayHoldAnythingBefore) {
  Case c;
  for (int i = 0; i < 4; ++i) {
    for (int k = 0; k < 2; ++k) fill_image(c.instance->levels[i][k], c.random, Content::any_samples);
    fill_image(c.instance->top[i], c.random, Content::any_samples);
  }
  EXPECT_TRUE(c.streams());
  c.expect_stages_result();
}

TEST(BlendStreamed, SourceRowsMayBePadded) {
  Case c;
  TestImage wide1(c.source1.width() + 5, 24, 3, kOld), wide2 = wide1;
  TestImage* const wide[2] = {&wide1, &wide2};
  const TestImage* const packed[2] = {&c.source1, &c.source2};
  BlendImage records[2];
  for (int i = 0; i < 2; ++i) {
    for (int y = 0; y < 24; ++y) {
      for (int x = 0; x < packed[i]->width(); ++x) {
        for (int k = 0; k < 3; ++k) wide[i]->at(x, y, k) = packed[i]->at(x, y, k);
      }
    }
    records[i] = **wide[i];
    records[i].width = c.source1.width();
  }
  const BlendImage* const sources[2] = {&records[0], &records[1]};
  EXPECT_TRUE(can_be_streamed(*c.instance, sources, *c.output));
  Blend_Proc(&*c.instance, &records[0], &records[1], c.output.record());
  EXPECT_EQ(by_hand(c.staged, *c.instance, c.source1, c.source2).samples(), c.output.samples());
}

TEST(BlendStreamed, HigherOutputKeepsItsRest) {
  Case c;
  TestImage high(c.instance->width, 30, 3, kOld);
  EXPECT_TRUE(streams(*c.instance, c.source1, c.source2, *high));
  Blend_Proc(&*c.instance, c.source1.record(), c.source2.record(), high.record());
  const TestImage expected = by_hand(c.staged, *c.instance, c.source1, c.source2);
  const auto rest = high.samples().begin() + static_cast<ptrdiff_t>(expected.samples().size());
  EXPECT_TRUE(std::equal(expected.samples().begin(), expected.samples().end(), high.samples().begin()));
  EXPECT_TRUE(std::all_of(rest, high.samples().end(), [](int32_t sample) { return sample == kOld; }));
}

TEST(BlendByStages, NoLevels) {
  Case c(blend_config(8, 6, 24, 0));
  EXPECT_FALSE(c.streams());
}

TEST(BlendByStages, LevelsThatReductionsLeaveAlone) {
  // 28 x 16, 14 x 8, 7 x 4, 4 x 2: both even and one of them 2, which is not reduced and not expanded to.
  for (int levels : {3, 4, 5}) {
    Case c(blend_config(8, 6, 16, levels));
    EXPECT_EQ(levels == 3, c.streams()) << levels;
    c.expect_stages_result();
  }
}

TEST(BlendByStages, BandsTooLowForTheScratchRows) {
  for (int height : {1, 3, 9, 12, 13}) {
    Case c(blend_config(9, 7, height, 1));
    EXPECT_EQ(height > 12, c.streams()) << height;
    c.expect_stages_result();
  }
}

TEST(BlendByStages, SourcesOfOtherSizes) {
  Case c;
  for (const auto& [width, height] :
       {std::pair{c.source1.width() + 1, 24}, {c.source1.width() - 1, 24}, {c.source1.width(), 23}, {c.source1.width(), 25}}) {
    TestImage other(width, height);
    other.randomize(c.random, 0, 255);
    EXPECT_FALSE(streams(*c.instance, other, c.source2, *c.output));
    EXPECT_FALSE(streams(*c.instance, c.source1, other, *c.output));
    EXPECT_EQ(0, Blend_Proc(&*c.instance, other.record(), c.source2.record(), c.output.record()));
    EXPECT_EQ(by_hand(c.staged, *c.instance, other, c.source2).samples(), c.output.samples());
  }
}

TEST(BlendByStages, TransitionWiderThanTheSource) {
  const BlendConfig config{30, 0, 20, 24, 2, 1, 0};
  Case c(config);
  EXPECT_FALSE(c.streams());
  c.expect_stages_result();
}

TEST(BlendByStages, PaddedSourcePixels) {
  Case c;
  TestImage wide(c.source1.width(), 24, 4);
  wide.randomize(c.random, 0, 255);
  EXPECT_FALSE(streams(*c.instance, wide, c.source2, *c.output));
  EXPECT_EQ(0, Blend_Proc(&*c.instance, wide.record(), c.source2.record(), c.output.record()));
  EXPECT_EQ(by_hand(c.staged, *c.instance, wide, c.source2).samples(), c.output.samples());
}

TEST(BlendByStages, OutputOfAnotherWidth) {
  Case c;
  TestImage narrow(c.instance->width / 2, 24, 3, kOld), expected = narrow;
  EXPECT_FALSE(streams(*c.instance, c.source1, c.source2, *narrow));
  Blend_Proc(&*c.instance, c.source1.record(), c.source2.record(), narrow.record());
  std::copy_n(c.instance->mask.data[0], 24 * c.instance->mask.stride, c.staged->mask.data[0]);
  blend_by_hand(*c.staged, *c.source1, *c.source2, *expected);
  EXPECT_EQ(expected.samples(), narrow.samples());
}

TEST(BlendByStages, LowerOutput) {
  Case c;
  TestImage low(c.instance->width, 20, 3, kOld);
  EXPECT_FALSE(streams(*c.instance, c.source1, c.source2, *low));
  Blend_Proc(&*c.instance, c.source1.record(), c.source2.record(), low.record());
  const TestImage expected = by_hand(c.staged, *c.instance, c.source1, c.source2);
  EXPECT_TRUE(std::equal(low.samples().begin(), low.samples().end(), expected.samples().begin()));
}

TEST(BlendByStages, OutputOverASource) {
  // Without a transition the sources have the band's size.
  Case c(blend_config(0, 12, 24, 2));
  EXPECT_TRUE(c.streams());
  TestImage in_place = c.source1;
  EXPECT_FALSE(streams(*c.instance, in_place, c.source2, *in_place));
  Blend_Proc(&*c.instance, in_place.record(), c.source2.record(), in_place.record());
  EXPECT_EQ(by_hand(c.staged, *c.instance, c.source1, c.source2).samples(), in_place.samples());
}

TEST(BlendByStages, OutputInTheInstance) {
  for (int which : {0, 1, 2, 3, 4}) {
    Case c;
    BlendImage output = which < 4 ? c.instance->levels[which][0] : c.instance->mask;
    EXPECT_FALSE(streams(*c.instance, c.source1, c.source2, output)) << which;
    Blend_Proc(&*c.instance, c.source1.record(), c.source2.record(), &output);
    const TestImage result = copy_of(output);
    Blend_Proc(&*c.staged, c.source1.record(), c.source2.record(), c.output.record());
    EXPECT_EQ(c.output.samples(), result.samples()) << which;
  }
}

TEST(BlendByStages, SourcesInTheInstance) {
  Case c(blend_config(0, 12, 24, 2));
  BlendImage images[] = {c.instance->band[0], c.instance->band[1], c.instance->levels[1][0]};
  for (BlendImage& image : images) {
    const BlendImage* const first[2] = {&image, c.source2.record()};
    const BlendImage* const second[2] = {c.source1.record(), &image};
    EXPECT_FALSE(can_be_streamed(*c.instance, first, *c.output));
    EXPECT_FALSE(can_be_streamed(*c.instance, second, *c.output));
  }
}

TEST(BlendByStages, RecordsThatTheHostChanged) {
  for (int which = 0; which < 6; ++which) {
    Case c;
    BlendImage* const images[] = {&c.instance->levels[0][0], &c.instance->levels[3][1], &c.instance->top[2], &c.instance->mask};
    for (BlendImage* image : images) {
      const BlendImage kept = *image;
      int32_t* const fields[] = {&image->width, &image->height, &image->channels, &image->stride, &image->steps[0]};
      if (which < 5) {
        --*fields[which];
      } else {
        image->data[0] = nullptr;
      }
      EXPECT_FALSE(c.streams()) << which;
      *image = kept;
    }
    EXPECT_TRUE(c.streams());
  }
}

}  // namespace
}  // namespace biseam::test
