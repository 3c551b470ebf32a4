// Whole frames of random pictures, and what their strips must hold.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "frame/frame.hpp"
#include "stages/blend/module.hpp"
#include "stages/format/convert.hpp"
#include "support/random_source.hpp"
#include "support/test_image.hpp"

namespace biseam::test {

using Bytes = std::vector<uint8_t>;

// Frames of random pictures.
struct Frames {
  explicit Frames(const StitchConfig& config) : luma(size_t(480 * 240)), chroma(luma) {
    for (Bytes& plane : planes) {
      plane.resize(size_t(config.in_luma_stride * config.in_h));
      for (uint8_t& sample : plane) sample = random.byte();
    }
  }
  void process(StitchEngine& engine, Weights weights) {
    const FisheyePlanes fisheyes[2] = {{planes[0].data(), planes[1].data()}, {planes[2].data(), planes[3].data()}};
    ASSERT_EQ(Status::ok, process_frame(engine, fisheyes, {luma.data(), chroma.data()}, {.weights = weights}));
  }

  RandomSource random;
  Bytes planes[4], luma, chroma;
};

// What is in a strip after a frame is what the bands give through images of 32-bit samples, under the weights there are.
inline void expect_blended_band(StitchEngine& e, int overlap) {
  const int format = e.band_yuv[0].format;
  TestImage sources[2] = {TestImage(e.band_width, 240), TestImage(e.band_width, 240)};
  for (int i = 0; i < 2; ++i) convert_image(&e.band_yuv[2 * overlap + i], sources[i].record(), BISEAM_RGB | format << 4);
  const BlendImage* const records[2] = {sources[0].record(), sources[1].record()};
  TestImage band(e.pair_width, 240);
  ASSERT_EQ(Status::ok, blend_under_mask(*e.blend[overlap], records, *band));
  const ImageHeader& strip = e.blend_yuv[overlap];
  const size_t pixels = size_t(e.pair_width * 240);
  Bytes luma(pixels), chroma(format == BISEAM_YUV420_SEMIPLANAR ? pixels / 2 : pixels);
  ImageHeader expected = strip;
  expected.planes[0] = luma.data();
  expected.planes[1] = chroma.data();
  convert_image(band.record(), &expected, format | BISEAM_RGB << 4);
  EXPECT_EQ(luma, Bytes(strip.planes[0], strip.planes[0] + luma.size()));
  EXPECT_EQ(chroma, Bytes(strip.planes[1], strip.planes[1] + chroma.size()));
}

}  // namespace biseam::test
