#include "stages/blend/module.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <thread>
#include <vector>

#include "biseam/biseam.h"
#include "stages/blend/blend_fixture.hpp"
#include "support/blend_formulas.hpp"

namespace biseam::test {
namespace {

// Source 1 with its mirror on the right, source 2 with its mirror on the left.
TestImage widened(const TestImage& source, int t, bool first) {
  TestImage band(source.width() + t, source.height());
  const int covered = source.width();
  for (int y = 0; y < band.height(); ++y) {
    for (int x = 0; x < band.width(); ++x) {
      const int c = first ? (x < covered ? x : 2 * covered - 1 - x) : (x < t ? t - 1 - x : x - t);
      for (int k = 0; k < 3; ++k) band.at(x, y, k) = source.at(c, y, k);
    }
  }
  return band;
}

TestImage left_half_mask(int width, int height) {
  TestImage mask(width, height);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width / 2; ++x) {
      for (int k = 0; k < 3; ++k) mask.at(x, y, k) = 64;
    }
  }
  return mask;
}

int picked(int position, int src_size, int dst_size) {
  const float scale = static_cast<float>(src_size) / static_cast<float>(dst_size);
  const float mapped = static_cast<float>((position + 0.5) * static_cast<double>(scale) - 0.5);
  return std::min(std::max(static_cast<int>(std::floor(mapped)), 0), src_size - 1);
}

TestImage resized(const TestImage& src, int width, int height) {
  TestImage dst(width, height);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      for (int k = 0; k < 3; ++k) dst.at(x, y, k) = src.at(picked(x, src.width(), width), picked(y, src.height(), height), k);
    }
  }
  return dst;
}

struct Sources {
  Sources(RandomSource& random, const BlendConfig& config)
      : first(config.band_width, config.in_h), second(config.band_width, config.in_h) {
    first.randomize(random, 0, 255);
    second.randomize(random, 0, 255);
  }
  TestImage first, second;
};

TestImage composed(const Sources& sources, const BlendConfig& config, const TestImage& mask) {
  return blended(widened(sources.first, config.trans_width, true), widened(sources.second, config.trans_width, false), mask,
                 config.pyr_level);
}

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

// ---- Every image of an instance ----------------------------------------------------------------------------------------

// Column x of a strip lies this far into the source, or at its edge.
TestImage strip_of(const TestImage& source, const BlendConfig& config, bool first) {
  TestImage strip(config.findpath_width, config.in_h);
  const int start = (source.width() + (first ? config.trans_width : -config.trans_width) - config.findpath_width) / 2;
  for (int y = 0; y < strip.height(); ++y) {
    for (int x = 0; x < strip.width(); ++x) {
      const int column = std::clamp(start + x, 0, source.width() - 1);
      for (int k = 0; k < 3; ++k) strip.at(x, y, k) = source.at(column, y, k);
    }
  }
  return strip;
}

std::vector<int32_t> gray_of(const TestImage& image) {
  std::vector<int32_t> gray;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      gray.push_back((76 * image.at(x, y, 0) + 150 * image.at(x, y, 1) + 30 * image.at(x, y, 2)) >> 8);
    }
  }
  return gray;
}

// One of 11 flat taps, as single precision has it.
float flat_tap() {
  const float plain = static_cast<float>(1 / (1.5 * 2.5066282746310002));
  float sum = 0;
  for (int i = 0; i < 11; ++i) sum += plain;
  return plain / sum;
}

// The mean of the samples up to five steps away, of those there are.
template <class SampleAt>
float mean_around(int at, int count, SampleAt sample_at) {
  const float tap = flat_tap();
  float sum = 0, taps = 0;
  for (int i = std::max(at - 5, 0); i <= std::min(at + 5, count - 1); ++i) {
    sum += tap * sample_at(i);
    taps += tap;
  }
  return sum / taps;
}

std::vector<int32_t> detail_of(const std::vector<int32_t>& gray, int width, int height) {
  std::vector<float> means(gray.size());
  std::vector<int32_t> detail(gray.size());
  const auto index = [&](int x, int y) { return static_cast<size_t>(y * width + x); };
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      means[index(x, y)] = mean_around(x, width, [&](int i) { return static_cast<float>(gray[index(i, y)]); });
    }
  }
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const float mean = mean_around(y, height, [&](int i) { return means[index(x, i)]; });
      detail[index(x, y)] = std::abs(gray[index(x, y)] - static_cast<int32_t>(mean));
    }
  }
  return detail;
}

std::vector<int32_t> samples_of(const BlendGray& image) {
  return std::vector<int32_t>(image.data, image.data + image.width * image.height);
}

void expect_image(const TestImage& expected, const BlendImage& image, const char* name) {
  EXPECT_EQ(expected.samples(), copy_of(image).samples()) << name;
}

// What a search leaves, up to the mask, which is returned.
TestImage expect_searched(const Sources& sources, const BlendConfig& config, const BlendInstance& instance) {
  const int width = instance.scaled_findpath_width, height = instance.scaled_height;
  TestGray details[2] = {{width, height}, {width, height}};
  for (int i = 0; i < 2; ++i) {
    const TestImage strip = strip_of(i == 0 ? sources.first : sources.second, config, i == 0);
    const TestImage scaled = resized(strip, width, height);
    const std::vector<int32_t> gray = gray_of(scaled);
    const std::vector<int32_t> detail = detail_of(gray, width, height);
    std::copy(detail.begin(), detail.end(), details[i].samples().begin());
    expect_image(strip, instance.strip[i], "strip");
    expect_image(scaled, instance.scaled_strip[i], "shrunk strip");
    EXPECT_EQ(gray, samples_of(instance.gray[i]));
    EXPECT_EQ(details[i].samples(), samples_of(instance.detail[i]));
  }
  TestImage seam_mask(instance.scaled_width, instance.scaled_height);
  const int offset = (instance.scaled_trans_width + instance.scaled_band_width - instance.scaled_findpath_width) / 2;
  EXPECT_EQ(0, GraphCut(offset, seam_mask.record(), details[0].record(), details[1].record()));
  expect_image(seam_mask, instance.seam_mask, "seam mask");
  return resized(seam_mask, instance.width, instance.height);
}

TestImage weighted(const TestImage& image, const TestImage& mask, bool first) {
  TestImage out = image;
  for (size_t i = 0; i < out.samples().size(); ++i) {
    out.samples()[i] *= first ? mask.samples()[i] : 64 - mask.samples()[i];
  }
  return out;
}

// The bands, and the four pyramids as the mixing leaves them: those of the sources weighted.
void expect_pyramids(const Sources& sources, const BlendConfig& config, const TestImage& mask, const BlendInstance& instance) {
  const int levels = config.pyr_level;
  const TestImage bands[2] = {widened(sources.first, config.trans_width, true),
                              widened(sources.second, config.trans_width, false)};
  const TestPyramid details[2] = {laplacian_of(bands[0], levels), laplacian_of(bands[1], levels)};
  const TestPyramid weights = gaussian_of(mask, levels);
  const auto level = [&](const TestPyramid& pyramid, int k) { return k < levels ? pyramid.levels[size_t(k)] : pyramid.top; };
  for (int i = 0; i < 2; ++i) expect_image(bands[i], instance.band[i], "band");
  for (int k = 0; k <= levels; ++k) {
    SCOPED_TRACE(k);
    const auto image = [&](int i) { return k < levels ? instance.levels[i][k] : instance.top[i]; };
    expect_image(weighted(level(details[0], k), level(weights, k), true), image(0), "source 1");
    expect_image(weighted(level(details[1], k), level(weights, k), false), image(1), "source 2");
    expect_image(level(weights, k), image(2), "weights");
    expect_image(mixed(level(details[0], k), level(details[1], k), level(weights, k)), image(3), "blended");
  }
}

void poison(BlendInstance& instance) {
  for (int i = 0; i < 2; ++i) {
    overwrite(instance.strip[i], -71);
    overwrite(instance.scaled_strip[i], -72);
    std::fill_n(instance.gray[i].data, instance.gray[i].width * instance.gray[i].height, -73);
    std::fill_n(instance.detail[i].data, instance.detail[i].width * instance.detail[i].height, -74);
    overwrite(instance.band[i], -75);
  }
  for (int i = 0; i < 4; ++i) {
    for (int k = 0; k < instance.pyr_level; ++k) overwrite(instance.levels[i][k], -76);
    overwrite(instance.top[i], -77);
  }
}

TEST(BlendProc, EveryImageOfTheInstanceIsFilled) {
  RandomSource random;
  for (const BlendConfig& config : {blend_config(8, 8, 40, 3), blend_config(5, 9, 33, 2),
                                    blend_config(8, 16, 64, 4, 30, 2.0f, 1), blend_config(9, 12, 31, 2, 20, 1.5f, 1),
                                    blend_config(0, 10, 41, 1, 20, 1.0f, 1), blend_config(8, 8, 24, 2, 12, 0.5f, 1)}) {
    for (const bool by_thread : {false, true}) {
      SCOPED_TRACE(testing::Message() << "band " << config.band_width << " x " << config.in_h << ", thread " << by_thread);
      TestInstance instance(config);
      poison(*instance);
      Sources sources(random, config);
      TestImage output(instance->width, instance->height, 3, -777);
      if (by_thread) {
        BlendThreadArgs args{&*instance, sources.first.record(), sources.second.record(), output.record()};
        EXPECT_EQ(nullptr, Blend_main_pht(&args));
      } else {
        EXPECT_EQ(0, Blend_Proc(&*instance, sources.first.record(), sources.second.record(), output.record()));
      }
      const TestImage mask = config.findpath_enable != 0 ? expect_searched(sources, config, *instance)
                                                         : left_half_mask(instance->width, instance->height);
      expect_image(mask, instance->mask, "mask");
      expect_pyramids(sources, config, mask, *instance);
      EXPECT_EQ(composed(sources, config, mask).samples(), output.samples());
    }
  }
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
