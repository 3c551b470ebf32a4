#pragma once

#include "biseam/records.h"
#include "biseam/stitcher.hpp"

namespace biseam {

// In some sizes one entry lies exactly on a lens axis, where the direction is zero times infinity: the remap would leave a dark
// pixel in the middle of the picture.  Puts the position of the axis there.
void mend_axes(StitchEngine& engine);

// Tests every entry of a configured engine's tables that a frame reads: the remap itself reads without bounds.
Error check_tables(const StitchEngine& engine);

}  // namespace biseam
