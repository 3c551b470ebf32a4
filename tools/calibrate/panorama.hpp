// Pictures that are stitched already.
#pragma once

#include "calibrate/calibrate.hpp"

namespace biseam::calibrate {

// Whether both halves of one picture, the left one first, show the whole sphere as an equirectangular panorama does: its sides
// meet, and its first and last row show one place each.
bool is_panorama(const LumaPair& halves);

}  // namespace biseam::calibrate
