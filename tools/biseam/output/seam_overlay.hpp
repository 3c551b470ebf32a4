#pragma once

#include "biseam/stitcher.hpp"
#include "picture.hpp"

namespace biseam::tool {

// Tints an overlap band and draws the line where the weights change sides.
void draw_band(const BandView& band, Rgb& panorama);

}  // namespace biseam::tool
