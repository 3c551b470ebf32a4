// Pictures of the virtual place: linear light gathered per pixel, then developed to code values.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "scene/camera.hpp"
#include "scene/place.hpp"

namespace biseam::scene {

// Linear light, row by row.
struct Frame {
  int width = 0, height = 0;
  std::vector<Vec3> pixels;
};

// A camera at its place.
struct View {
  int width, height;
  double pixel_angle;                               // radians across a pixel, at most
  std::function<std::optional<Ray>(Position)> ray;  // none: black
};

View view_of(const PanoramaView& panorama);
View view_of(const Fisheye& lens, double baseline);

// Mean light of a pixel, and between which distances what was seen of the place lies.
struct Pixel {
  Vec3 light;
  double nearest = 1e30, farthest = 0;  // metres, the sky left out
  bool is_mirrored = false;
};
Pixel render_pixel(const Place& place, const View& view, int x, int y);

Frame render(const Place& place, const View& view);

// Calls work(row) for every row, on all processors.
void for_each_row(int rows, const std::function<void(int)>& work);

struct Development {
  Vec3 gain{1, 1, 1};      // of linear light
  double noise = 0;        // standard deviation, code values
  std::uint64_t seed = 0;  // of the noise
};

// 8-bit sRGB, three bytes a pixel, rows without padding.
std::vector<std::uint8_t> develop(const Frame& frame, const Development& how);

}  // namespace biseam::scene
