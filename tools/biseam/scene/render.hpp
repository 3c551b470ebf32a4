// Pictures of the virtual place: linear light gathered per pixel, then developed to code values.
#pragma once

#include <cstdint>
#include <vector>

#include "scene/camera.hpp"
#include "scene/place.hpp"

namespace biseam::scene {

// Linear light, row by row.
struct Frame {
  int width = 0, height = 0;
  std::vector<Vec3> pixels;
};

Frame render_panorama(const Place& place, const PanoramaView& view);

// Black outside the image circle.
Frame render_fisheye(const Place& place, const Fisheye& lens, double baseline);

struct Development {
  double exposure = 0;     // stops
  double noise = 0;        // standard deviation, code values
  std::uint64_t seed = 0;  // of the noise
};

// 8-bit sRGB, three bytes a pixel, rows without padding.
std::vector<std::uint8_t> develop(const Frame& frame, const Development& how);

}  // namespace biseam::scene
