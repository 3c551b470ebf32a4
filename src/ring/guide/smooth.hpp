// Guides of a clip's frames made smooth in time, with what came before a frame and what comes after it.
#pragma once

#include "ring/guide/guide.hpp"

namespace biseam::ring {

// How many frames to either side have an effect on one.
int guide_reach(const GuideShape& shape) noexcept;

// guides: count valid ones, as frames measured them, in order; smoothed: of frame index, may not be one of them.  What lies
// beyond a cut or farther away than guide_reach has no effect.
//
// Light is the mean of half a second to either side, without frames that differ clearly from most: it follows a sudden change
// at once, and no flash.  Disparities are the mean of the middle half of an eighth of a second to either side.  A steady seam
// was found where it cost least in the frames up to one: the mean over as many frames from this one on lies in their middle.
void smooth_guide(const GuideShape& shape, const void* const* guides, int count, int index, void* smoothed) noexcept;

}  // namespace biseam::ring
