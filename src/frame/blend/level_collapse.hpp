#pragma once

#include <cstdint>

#include "biseam/records.h"

namespace biseam {

// One level of a Gaussian pyramid.  Level 0 is given by a source that is widened exactly, row by row; trans_width is 0 at
// every other level.
struct GaussianLevel {
  const BlendImage* image;
  int trans_width, side;
  const BlendImage* below;  // the next level
};

// Two sources at one level, and what has been collapsed so far.
struct MixedLevel {
  GaussianLevel source1, source2;
  const BlendImage* mask;           // of this level's size; so are the sources, widened
  const BlendImage* blended_below;  // of the next level's size
};

// Samples of scratch that collapse_level takes for a level of that width.
int64_t collapse_scratch(int width);

// up(blended) + (source1 - up(its next level)) * mask + (source2 - up(its next level)) * (64 - mask), the level of a collapsed
// pyramid, from Gaussian pyramids and without images of Laplacian levels.  Images are packed but for the strides of the
// sources; out overlaps none of the others.
void collapse_level(const MixedLevel& level, BlendImage& out, int32_t* scratch);

}  // namespace biseam
