#pragma once

#include <cstdint>

#include "biseam/records.h"
#include "blend/byte_image.hpp"

namespace biseam {

// Two sources at one level and the next, and what has been collapsed so far.
struct MixedByteLevel {
  ByteImage source1, source2, mask;
  ByteImage below1, below2;
  const BlendImage* blended_below;
};

// collapse_level from bytes, with the same scratch.
void collapse_byte_level(const MixedByteLevel& level, BlendImage& out, int32_t* scratch);

}  // namespace biseam
