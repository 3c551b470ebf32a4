// What libav's muxer leaves out of QuickTime files.
#pragma once

#include <span>
#include <string>

#include "clip/write/boxes.hpp"

namespace biseam::tool {

struct TrackAddition {
  std::uint32_t track = 0;  // its number in the file
  bool spherical = false;   // mark its pictures as equirectangular
  std::string language;     // three letters, where the muxer had no code for it
};

// Adds to the tracks of a movie box, which begins with its own size; what the box has no track for is left out.  False and
// nothing done when the box is not laid out as expected.
bool add_to_tracks(Bytes& movie, std::span<const TrackAddition> tracks);

}  // namespace biseam::tool
