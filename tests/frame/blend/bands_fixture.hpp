// One band for bytes and for the stages.
#pragma once

#include <algorithm>
#include <cstdint>

#include "biseam/biseam.h"
#include "frame/blend/byte_band.hpp"
#include "frame/blend/workspace.hpp"
#include "stages/blend/blend_fixture.hpp"
#include "stages/blend/module.hpp"

namespace biseam::test {

constexpr int32_t kOld = -777;

// Any samples of the range, its ends only, or vertical stripes of the ends, which give the largest details.
inline void fill_image(const BlendImage& image, RandomSource& random, int most) {
  const int kind = random.between(0, 2), shift = random.between(0, 5), start = random.between(0, 1);
  const int64_t count = int64_t{image.height} * image.stride;
  for (int64_t i = 0; i < count; ++i) {
    const int column = static_cast<int>(i % image.stride) / 3;
    image.data[0][i] = kind == 0   ? random.between(0, most)
                       : kind == 1 ? most * random.between(0, 1)
                                   : most * ((column >> shift & 1) ^ start);
  }
}

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

}  // namespace biseam::test
