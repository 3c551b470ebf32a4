#include "stitch/seam_overlay.hpp"

#include <algorithm>
#include <cstddef>

namespace biseam::tool {
namespace {

struct Colour {
  int r, g, b;
};
constexpr Colour kRingColour{255, 160, 0}, kSeamColour{255, 0, 60};
constexpr int kRingShare = 56, kSeamShare = 256;  // of 256

void mix(Rgb& picture, std::size_t at, Colour colour, int share) {
  std::uint8_t* pixel = &picture.bytes[at * 3];
  const int channels[3] = {colour.r, colour.g, colour.b};
  for (int c = 0; c < 3; ++c) pixel[c] = std::uint8_t((pixel[c] * (256 - share) + channels[c] * share + 128) >> 8);
}

// A seam hides what is under it: what comes last counts.
void mix(Rgba& layer, std::size_t at, Colour colour, int share) {
  const int channels[4] = {colour.r, colour.g, colour.b, std::min(share, 255)};
  std::copy_n(channels, 4, &layer.bytes[at * 4]);
}

bool is_joined(Zone zone) { return zone != Zone::one_lens; }

// The last column's neighbour is the first.
bool is_border(const SeamMap& map, int x, int y) {
  const Zone zone = map.at(x, y), right = map.at((x + 1) % map.size.width, y);
  const Zone below = y + 1 < map.size.height ? map.at(x, y + 1) : zone;
  const auto differs = [&](Zone other) { return is_joined(other) && other != zone; };
  return is_joined(zone) && (differs(right) || differs(below));
}

template <class Picture>
void draw(const SeamMap& map, Picture& panorama) {
  const auto [width, height] = map.size;
  const auto index = [&](int x, int y) { return std::size_t(y) * std::size_t(map.size.width) + std::size_t(x); };
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      if (is_joined(map.at(x, y))) mix(panorama, index(x, y), kRingColour, kRingShare);
    }
  }
  const int thickness = std::max(1, width / 960);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      if (!is_border(map, x, y)) continue;
      for (int k = 0; k < thickness * thickness; ++k) {
        const int line_x = x + k % thickness, line_y = y + k / thickness;
        if (line_x < width && line_y < height) mix(panorama, index(line_x, line_y), kSeamColour, kSeamShare);
      }
    }
  }
}

}  // namespace

void draw_seams(const SeamMap& map, Rgb& panorama) { draw(map, panorama); }
void draw_seams(const SeamMap& map, Rgba& layer) { draw(map, layer); }

}  // namespace biseam::tool
