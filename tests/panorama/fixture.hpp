#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#include "biseam/stitcher.hpp"

namespace biseam::test {

// Pictures of 220 degree lenses, 128 x 128, to a panorama of 256 x 128.  Every rule holds.
inline StitchConfig valid_config(int format = BISEAM_YUV420_SEMIPLANAR) {
  StitchConfig config = {};
  config.in_h = config.in_w = config.in_luma_stride = config.in_chroma_stride = 128;
  config.in_yuv_type = config.out_yuv_type = format;
  config.out_h[0] = 128;
  config.out_w[0] = config.out_luma_stride[0] = config.out_chroma_stride[0] = 256;
  config.p0 = config.p1 = 33.3f;
  config.cx0 = config.cy0 = config.cx1 = config.cy1 = 63.5f;
  config.lens_matrix[0] = config.lens_matrix[4] = config.lens_matrix[8] = 1;
  config.change_focus = 1;
  config.feather = 8;
  config.trans_width = 8;
  config.findpath_width = 16;
  config.pyr_level = 3;
  config.findpath_enable = 1;
  config.inv_scale = 2;
  return config;
}

// An exact-size heap block, so that a sanitizer sees any access outside.
class Plane {
 public:
  explicit Plane(std::size_t size) : size_(size), data_(static_cast<uint8_t*>(std::malloc(size))) {}
  Plane(std::size_t size, uint8_t value) : Plane(size) { std::memset(data_.get(), value, size); }
  Plane(std::size_t size, std::mt19937& random) : Plane(size) {
    for (std::size_t i = 0; i < size; ++i) data_.get()[i] = static_cast<uint8_t>(random());
  }
  uint8_t* data() { return data_.get(); }
  std::size_t size() const { return size_; }
  operator std::span<const uint8_t>() const { return {data_.get(), size_}; }
  operator std::span<uint8_t>() { return {data_.get(), size_}; }
  std::vector<uint8_t> bytes() const { return {data_.get(), data_.get() + size_}; }

 private:
  struct Free {
    void operator()(uint8_t* data) const { std::free(data); }
  };
  std::size_t size_;
  std::unique_ptr<uint8_t, Free> data_;
};

// Noise for both lenses and a panorama to fill, of the least sizes.
struct Frame {
  Frame(const StitcherSizes& sizes, std::mt19937& random)
      : luma0(sizes.fisheye_luma, random),
        chroma0(sizes.fisheye_chroma, random),
        luma1(sizes.fisheye_luma, random),
        chroma1(sizes.fisheye_chroma, random),
        luma(sizes.panorama_luma, uint8_t{0x5a}),
        chroma(sizes.panorama_chroma, uint8_t{0x5a}) {}

  Error stitch(Stitcher& stitcher) { return stitcher.process({luma0, chroma0}, {luma1, chroma1}, {luma, chroma}); }

  Plane luma0, chroma0, luma1, chroma1, luma, chroma;
};

using Planes = std::vector<std::vector<uint8_t>>;

inline Planes panorama_of(const Frame& frame) { return {frame.luma.bytes(), frame.chroma.bytes()}; }

inline void blank(Frame& frame) {
  std::memset(frame.luma.data(), 0x5a, frame.luma.size());
  std::memset(frame.chroma.data(), 0x5a, frame.chroma.size());
}

inline Stitcher make(const StitchConfig& config, const StitcherOptions& options = {}) {
  Result<Stitcher> made = Stitcher::create(config, options);
  EXPECT_TRUE(made) << made.error().text();
  return std::move(*made);
}

inline Planes stitch(Stitcher& stitcher, Frame& frame) {
  blank(frame);
  const Error error = frame.stitch(stitcher);
  EXPECT_FALSE(error) << error.text();
  return panorama_of(frame);
}

}  // namespace biseam::test
