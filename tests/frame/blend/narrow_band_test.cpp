#include "frame/blend/narrow_band.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "biseam/biseam.h"
#include "frame/blend/byte_image.hpp"
#include "frame/blend/streamed_band.hpp"
#include "stages/blend/blend_fixture.hpp"
#include "stages/blend/module.hpp"

namespace biseam::test {
namespace {

constexpr int32_t kOld = -777;

int32_t* end_of(const BlendImage& image) { return image.data[0] + int64_t{image.height} * image.stride; }

// Any samples of the range, its ends only, or vertical stripes of the ends, which give the largest details.
void fill(const BlendImage& image, RandomSource& random, int most) {
  const int kind = random.between(0, 2), shift = random.between(0, 5), start = random.between(0, 1);
  for (int32_t* sample = image.data[0]; sample != end_of(image); ++sample) {
    const int column = static_cast<int>((sample - image.data[0]) % image.stride) / 3;
    *sample = kind == 0   ? random.between(0, most)
              : kind == 1 ? most * random.between(0, 1)
                          : most * ((column >> shift & 1) ^ start);
  }
}

// The stages, one after the other, as a host may call them.
TestImage by_hand(BlendInstance& instance, TestImage& source1, TestImage& source2) {
  TestImage* const sources[2] = {&source1, &source2};
  TestImage output(instance.width, instance.height, 3, kOld);
  for (int i = 0; i < 2; ++i) {
    CreatBlend(sources[i]->record(), &instance.band[i], instance.trans_width, i == 0 ? 1 : 0);
    BuildLaplacianPyramid(&instance.band[i], &instance.levels[i], &instance.top[i], instance.pyr_level);
  }
  BuildGuassPyramid(&instance.mask, &instance.levels[2], &instance.top[2], instance.pyr_level);
  BlendLapPyrs(&instance.levels[0], &instance.top[0], &instance.levels[1], &instance.top[1], &instance.levels[2],
               &instance.top[2], &instance.levels[3], &instance.top[3], instance.pyr_level);
  ReconstructImage(&instance.top[3], &instance.levels[3], output.record(), instance.pyr_level);
  return output;
}

void overwrite_levels(BlendInstance& instance, RandomSource& random) {
  for (int i = 0; i < 4; ++i) {
    for (int k = 0; k <= instance.pyr_level; ++k) {
      overwrite(k < instance.pyr_level ? instance.levels[i][k] : instance.top[i], static_cast<int32_t>(random.word()));
    }
  }
}

// An instance with sources and a mask in range.
struct Band {
  Band(const BlendConfig& config, RandomSource& random_source)
      : random(random_source),
        instance(config),
        source1(config.band_width, config.in_h),
        source2(source1),
        output(instance->width, instance->height, 3, kOld) {
    fill(*source1, random, 255);
    fill(*source2, random, 255);
    fill(instance->mask, random, 64);
  }
  bool streams() { return can_be_streamed(*instance, sources, *output); }
  bool blend_by_bytes() {
    overwrite_levels(*instance, random);
    return blend_narrow(*instance, sources, *output);
  }
  TestImage streamed() {
    overwrite_levels(*instance, random);
    TestImage result(instance->width, instance->height, 3, kOld);
    blend_streamed(*instance, sources, *result);
    return result;
  }

  RandomSource& random;
  TestInstance instance;
  TestImage source1, source2;
  TestImage output;
  const BlendImage* const sources[2] = {source1.record(), source2.record()};
};

TEST(BlendNarrow, EqualsTheStreamedBandAndTheStagesAtEverySize) {
  RandomSource random;
  int streamed = 0;
  for (int round = 0; round < 600 && !HasFailure(); ++round) {
    const int t = random.between(0, 30), width = std::max(1, t + random.between(0, 40));
    const BlendConfig config{t, 0, width, random.between(1, 60), random.between(1, 7), 1, 0};
    Band band(config, random);
    if (!band.streams()) continue;
    ++streamed;
    const TestImage source1 = band.source1, source2 = band.source2, mask = copy_of(band.instance->mask);
    ASSERT_TRUE(band.blend_by_bytes());
    EXPECT_EQ(band.streamed().samples(), band.output.samples())
        << width << " + " << t << " x " << config.in_h << ", levels " << config.pyr_level;
    EXPECT_EQ(by_hand(*band.instance, band.source1, band.source2).samples(), band.output.samples());
    EXPECT_EQ(source1.samples(), band.source1.samples());
    EXPECT_EQ(source2.samples(), band.source2.samples());
    EXPECT_EQ(mask.samples(), copy_of(band.instance->mask).samples());
  }
  EXPECT_GT(streamed, 200);
}

TEST(BlendNarrow, EqualsTheStreamedBandAtTheUsualSize) {
  RandomSource random;
  for (int round = 0; round < 10; ++round) {
    Band band(blend_config(64, 32, random.between(100, 200), 5), random);
    ASSERT_TRUE(band.streams());
    ASSERT_TRUE(band.blend_by_bytes());
    EXPECT_EQ(band.streamed().samples(), band.output.samples());
  }
}

// What a sink has got, in order.
struct Taken {
  std::vector<int32_t> samples;
  int width, rows = 0;

  static void take(void* context, int32_t* rows, int y, int count) {
    Taken& self = *static_cast<Taken*>(context);
    EXPECT_EQ(self.rows, y);
    EXPECT_GE(2, count);
    self.rows += count;
    self.samples.insert(self.samples.end(), rows, rows + ptrdiff_t{3} * self.width * count);
    std::fill_n(rows, ptrdiff_t{3} * self.width * count, kOld);  // nobody needs them any more
  }
  RowSink sink() { return {take, this}; }
};

TEST(BlendNarrow, SinkGetsTheRowsInsteadOfTheOutput) {
  RandomSource random;
  int streamed = 0;
  for (int round = 0; round < 200 && !HasFailure(); ++round) {
    const int t = random.between(0, 30), width = std::max(1, t + random.between(0, 40));
    Band band({t, 0, width, random.between(10, 60), random.between(1, 4), 1, 0}, random);
    if (!band.streams()) continue;
    ++streamed;
    Taken taken{{}, band.instance->width};
    const RowSink sink = taken.sink();
    overwrite_levels(*band.instance, random);
    ASSERT_TRUE(blend_narrow(*band.instance, band.sources, *band.output, &sink));
    EXPECT_EQ(band.instance->height, taken.rows);
    EXPECT_EQ(band.streamed().samples(), taken.samples);
    EXPECT_TRUE(
        std::all_of(band.output.samples().begin(), band.output.samples().end(), [](int32_t sample) { return sample == kOld; }));
  }
  EXPECT_GT(streamed, 100);
}

TEST(BlendNarrow, SinkGetsNothingOfAHigherOutput) {
  RandomSource random;
  Band band(blend_config(8, 6, 40, 3), random);
  Taken taken{{}, band.instance->width};
  const RowSink sink = taken.sink();
  TestImage output(band.instance->width, 43, 3, kOld);
  ASSERT_TRUE(blend_narrow(*band.instance, band.sources, *output, &sink));
  EXPECT_EQ(0, taken.rows);
  const TestImage blended = band.streamed();
  EXPECT_TRUE(std::equal(blended.samples().begin(), blended.samples().end(), output.samples().begin()));
}

TEST(BlendNarrow, SinkGetsNothingOfABandOutOfRange) {
  RandomSource random;
  Band band(blend_config(8, 6, 40, 3), random);
  band.source2.samples().back() = 256;
  Taken taken{{}, band.instance->width};
  const RowSink sink = taken.sink();
  ASSERT_EQ(Status::ok, blend_band(*band.instance, *band.source1, *band.source2, *band.output, nullptr, Weights::kept, &sink));
  EXPECT_EQ(0, taken.rows);
  EXPECT_EQ(by_hand(*band.instance, band.source1, band.source2).samples(), band.output.samples());
}

TEST(BlendNarrow, NarrowestBandsHaveScratchEnough) {
  // Scratch lies where the blended level 0 would be; samples behind it stay.
  RandomSource random;
  int streamed = 0;
  for (int width = 1; width < 12; ++width) {
    for (int height = 12; height < 80; ++height) {
      Band band({0, 0, width, height, 1, 1, 0}, random);
      if (!band.streams()) continue;
      const BlendImage& level = band.instance->levels[3][0];
      TestImage samples(level.width, level.height + 20, 3, kOld);
      band.instance->levels[3][0].data[0] = samples.record()->data[0];
      Taken taken{{}, level.width};
      const RowSink sink = taken.sink();
      ASSERT_TRUE(blend_narrow(*band.instance, band.sources, *band.output));
      ASSERT_TRUE(blend_narrow(*band.instance, band.sources, *band.output, &sink));
      const auto behind = samples.samples().begin() + int64_t{level.height} * level.stride;
      ASSERT_TRUE(std::all_of(behind, samples.samples().end(), [](int32_t sample) { return sample == kOld; }));
      ASSERT_EQ(band.streamed().samples(), band.output.samples());
      ASSERT_EQ(taken.samples, band.output.samples());
      ++streamed;
    }
  }
  EXPECT_GT(streamed, 50);
}

TEST(BlendNarrow, RefusesWhatIsOutOfRangeAndLeavesTheOutput) {
  RandomSource random;
  for (int round = 0; round < 300 && !HasFailure(); ++round) {
    Band band(blend_config(random.between(0, 20), random.between(3, 20), random.between(20, 50), random.between(1, 2)), random);
    if (!band.streams()) continue;
    const int which = random.between(0, 2);  // source 1, source 2, mask
    const BlendImage& image = which == 0 ? *band.source1 : which == 1 ? *band.source2 : band.instance->mask;
    const int32_t outliers[] = {which == 2 ? 65 : 256, -1, INT32_MIN, INT32_MAX, 1 << 8, 1 << 16};
    image.data[0][random.between(0, static_cast<int>(end_of(image) - image.data[0]) - 1)] = outliers[random.between(0, 5)];
    EXPECT_FALSE(band.blend_by_bytes());
    EXPECT_TRUE(
        std::all_of(band.output.samples().begin(), band.output.samples().end(), [](int32_t sample) { return sample == kOld; }));
  }
}

// Puts the sources where blend_bytes takes them from.
void place_bytes(Band& band) {
  TestImage* const sources[2] = {&band.source1, &band.source2};
  for (int i = 0; i < 2; ++i) {
    TestImage widened(band.instance->width, band.instance->height);
    CreatBlend(sources[i]->record(), widened.record(), band.instance->trans_width, i == 0 ? 1 : 0);
    std::copy(widened.samples().begin(), widened.samples().end(), ByteImage::in(band.instance->levels[i][0]).data);
  }
}

TEST(BlendBytes, EqualsTheBandOfTheSamePixels) {
  RandomSource random;
  int streamed = 0;
  for (int round = 0; round < 300 && !HasFailure(); ++round) {
    const int t = random.between(0, 20), width = t + random.between(10, 40), search = random.between(0, 1);
    const float inv_scale = static_cast<float>(random.between(1, 2));
    const BlendConfig config{t, random.between(6, 20), width, random.between(12, 60), random.between(1, 4), inv_scale, search};
    Band band(config, random), other(config, random);
    if (!band.streams()) continue;
    ++streamed;
    other.source1 = band.source1;
    other.source2 = band.source2;
    overwrite(band.instance->mask, 0);
    overwrite(other.instance->mask, 0);
    for (int frame = 0; frame < 2; ++frame) {
      const Weights weights = frame == 0 ? Weights::made : Weights::kept;
      ASSERT_EQ(Status::ok,
                blend_band(*other.instance, *other.source1, *other.source2, *other.output, nullptr, weights, nullptr));
      overwrite_levels(*band.instance, random);
      place_bytes(band);
      ASSERT_EQ(Status::ok, blend_bytes(*band.instance, *band.output, nullptr, weights, nullptr));
      EXPECT_EQ(other.output.samples(), band.output.samples());
      EXPECT_EQ(copy_of(other.instance->mask).samples(), copy_of(band.instance->mask).samples());
      EXPECT_EQ(copy_of(other.instance->seam_mask).samples(), copy_of(band.instance->seam_mask).samples());
    }
  }
  EXPECT_GT(streamed, 100);
}

TEST(BlendBytes, RefusesWeightsOutOfRangeAndLeavesTheOutput) {
  RandomSource random;
  for (const int32_t weight : {65, -1, INT32_MIN, INT32_MAX}) {
    Band band(blend_config(8, 6, 40, 3), random);
    band.instance->mask
        .data[0][random.between(0, static_cast<int>(end_of(band.instance->mask) - band.instance->mask.data[0]) - 1)] = weight;
    place_bytes(band);
    EXPECT_EQ(Status::mismatch, blend_bytes(*band.instance, *band.output, nullptr, Weights::kept, nullptr));
    EXPECT_TRUE(
        std::all_of(band.output.samples().begin(), band.output.samples().end(), [](int32_t sample) { return sample == kOld; }));
  }
}

// Through the exported function: a mask is the instance's own there, 64 in its left half.
void expect_stages_result(Band& band) {
  EXPECT_EQ(0, Blend_Proc(&*band.instance, band.source1.record(), band.source2.record(), band.output.record()));
  EXPECT_EQ(by_hand(*band.instance, band.source1, band.source2).samples(), band.output.samples());
}

TEST(BlendNarrow, ExportedFunctionTakesSourcesOfAnyRange) {
  RandomSource random;
  for (int round = 0; round < 200 && !HasFailure(); ++round) {
    Band band(blend_config(random.between(0, 20), random.between(3, 20), random.between(20, 50), random.between(1, 4)), random);
    TestImage& image = round % 2 == 0 ? band.source1 : band.source2;
    if (round % 4 < 2) {
      // One sample only, often in the last rows.
      const int last = static_cast<int>(image.samples().size()) - 1;
      image.samples()[static_cast<size_t>(random.between(round % 3 == 0 ? last - 9 : 0, last))] = round % 5 < 2 ? 256 : -1;
    } else {
      for (int32_t& sample : image.samples()) sample = static_cast<int32_t>(random.word());
    }
    expect_stages_result(band);
  }
}

TEST(BlendNarrow, ExportedFunctionTakesMasksOfAnyRange) {
  RandomSource random;
  for (const int32_t weight : {65, 127, 255, 256, -1, INT32_MIN, INT32_MAX}) {
    Band band(blend_config(8, 6, 24, 2), random);
    // The right half is the host's.
    band.instance->mask.data[0][band.instance->mask.stride - 1] = weight;
    expect_stages_result(band);
  }
}

TEST(BlendNarrow, BytesAfterOtherSamplesAndBack) {
  RandomSource random;
  Band band(blend_config(8, 6, 40, 3), random);
  for (int frame = 0; frame < 12; ++frame) {
    for (TestImage* source : {&band.source1, &band.source2}) {
      fill(**source, random, frame % 3 == 1 ? 100000 : 255);
    }
    expect_stages_result(band);
  }
}

}  // namespace
}  // namespace biseam::test
