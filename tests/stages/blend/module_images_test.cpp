// Every image that an instance's functions leave behind.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "biseam/biseam.h"
#include "stages/blend/plain_band.hpp"

namespace biseam::test {
namespace {

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

}  // namespace
}  // namespace biseam::test
