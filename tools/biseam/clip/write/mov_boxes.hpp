// What libav's muxer leaves out of QuickTime files.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace biseam::tool {

struct TrackAddition {
  bool spherical = false;  // mark its pictures as equirectangular
  std::string language;    // three letters, where the muxer had no code for it
};

// Adds to the tracks of a movie box, which begins with its own size, in their order.  False and nothing done when the box is
// not laid out as expected.
bool add_to_tracks(std::vector<std::uint8_t>& movie, std::span<const TrackAddition> tracks);

struct MovieBox {
  std::int64_t at = 0;  // in the file
  std::vector<std::uint8_t> bytes;
};

// The movie box of a finished file, if it is the last one and may grow.
std::optional<MovieBox> read_movie(int descriptor);

}  // namespace biseam::tool
