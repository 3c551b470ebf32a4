#include "stitch/seam_overlay.hpp"

#include <algorithm>
#include <cstddef>

#include "stitch/seam_path.hpp"

namespace biseam::tool {
namespace {

struct Colour {
  int r, g, b;
};
constexpr Colour kBandColour{255, 160, 0}, kSeamColour{255, 0, 60};
constexpr int kBandShare = 56, kSeamShare = 256;  // of 256

void mix(Rgb& picture, std::size_t at, Colour colour, int share) {
  std::uint8_t* pixel = &picture.bytes[at * 3];
  const int channels[3] = {colour.r, colour.g, colour.b};
  for (int c = 0; c < 3; ++c) pixel[c] = std::uint8_t((pixel[c] * (256 - share) + channels[c] * share + 128) >> 8);
}

// Bands do not overlap, and a seam hides its band: what comes last counts.
void mix(Rgba& layer, std::size_t at, Colour colour, int share) {
  const int channels[4] = {colour.r, colour.g, colour.b, std::min(share, 255)};
  std::copy_n(channels, 4, &layer.bytes[at * 4]);
}

template <class Picture>
void mix_inside(Picture& picture, int x, int y, Colour colour, int share) {
  if (x < 0 || y < 0 || x >= picture.width || y >= picture.height) return;
  mix(picture, std::size_t(y) * std::size_t(picture.width) + std::size_t(x), colour, share);
}

bool is_border(const BandView& band, int x, int y) {
  const bool side = is_counted_side(band, x, y);
  return (x + 1 < band.width && is_counted_side(band, x + 1, y) != side) ||
         (y + 1 < band.height && is_counted_side(band, x, y + 1) != side);
}

template <class Picture>
void draw(const BandView& band, Picture& panorama) {
  for (int y = 0; y < band.height; ++y) {
    for (int x = 0; x < band.width; ++x) mix_inside(panorama, band.first_column + x, y, kBandColour, kBandShare);
  }
  const int thickness = std::max(1, panorama.width / 960);
  for (int y = 0; y < band.height; ++y) {
    for (int x = 0; x < band.width; ++x) {
      if (!is_border(band, x, y)) continue;
      for (int k = 0; k < thickness * thickness; ++k) {
        mix_inside(panorama, band.first_column + x + k % thickness, y + k / thickness, kSeamColour, kSeamShare);
      }
    }
  }
}

}  // namespace

void draw_band(const BandView& band, Rgb& panorama) { draw(band, panorama); }
void draw_band(const BandView& band, Rgba& layer) { draw(band, layer); }

}  // namespace biseam::tool
