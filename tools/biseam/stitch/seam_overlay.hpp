#pragma once

#include "picture/picture.hpp"
#include "stitch/seams.hpp"

namespace biseam::tool {

// Tints where the lenses are joined and draws the seams.  The picture has the map's size.
void draw_seams(const SeamMap& map, Rgb& panorama);

// The same on a picture that can be laid over a panorama.
void draw_seams(const SeamMap& map, Rgba& layer);

}  // namespace biseam::tool
