#pragma once

#include "biseam/stitcher.hpp"
#include "picture/picture.hpp"

namespace biseam::tool {

// Tints an overlap band and draws the line where the weights change sides.
void draw_band(const BandView& band, Rgb& panorama);

// The same on a picture that can be laid over a panorama.
void draw_band(const BandView& band, Rgba& layer);

}  // namespace biseam::tool
