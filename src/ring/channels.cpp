#include "ring/channels.hpp"

namespace biseam::ring {

namespace {

PlaneGeometry geometry_of(const Lens& lens, const PlaneGrid& grid) noexcept {
  return {.width = plane_size(lens.width, grid.bits_x),
          .height = plane_size(lens.height, grid.bits_y),
          .spacing_x = 1 << grid.bits_x,
          .spacing_y = 1 << grid.bits_y,
          .origin_x = grid.half_x << 15,
          .origin_y = grid.half_y << 15};
}

int channel_count(const PictureFormat& format) noexcept { return format.planes == 1 ? 1 : 3; }

}  // namespace

Channel find_channel(const PictureFormat& format, int channel) noexcept {
  if (format.planes == kMostPlanes || channel == 0) return {channel, 0, 1};
  return {1, format.plane[1].channels[0] == channel ? 0 : 1, 2};
}

StripConfig strip_config(const Camera& camera, const PictureFormat& format, StripShape shape) noexcept {
  StripConfig config{.shape = shape, .planes = channel_count(format), .geometry = {}};
  for (int lens = 0; lens < 2; ++lens) {
    for (int c = 0; c < config.planes; ++c) {
      config.geometry[lens][c] = geometry_of(camera.lens[lens], format.plane[find_channel(format, c).plane].grid);
    }
  }
  return config;
}

}  // namespace biseam::ring
