#pragma once

#include <cstdint>

#include "biseam/records.h"
#include "frame/blend/byte_image.hpp"
#include "frame/blend/row_sink.hpp"

namespace biseam {

// Two sources at one level and the next, and what has been collapsed so far.
struct MixedLevel {
  ByteImage source1, source2, mask;
  ByteImage below1, below2;
  const BlendImage* blended_below;
};

// Samples of scratch that collapse_level takes for a level of that width.
int64_t collapse_scratch(int width);

// up(blended) + (source1 - up(its next level)) * mask + (source2 - up(its next level)) * (64 - mask), the level of a collapsed
// pyramid, from Gaussian pyramids and without images of Laplacian levels.
void collapse_level(const MixedLevel& level, BlendImage& out, int32_t* scratch);

// The same of an even height, row pair by row pair to a sink.
void collapse_level(const MixedLevel& level, const RowSink& sink, int32_t* scratch);

}  // namespace biseam
