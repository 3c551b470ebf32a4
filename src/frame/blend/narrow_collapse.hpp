#pragma once

#include <cstdint>

#include "biseam/records.h"
#include "frame/blend/byte_image.hpp"
#include "frame/blend/row_sink.hpp"

namespace biseam {

// Two sources at one level and the next, and what has been collapsed so far.
struct MixedByteLevel {
  ByteImage source1, source2, mask;
  ByteImage below1, below2;
  const BlendImage* blended_below;
};

// collapse_level from bytes, with the same scratch.  With a sink the rows go there, and nothing is written to out.
void collapse_byte_level(const MixedByteLevel& level, BlendImage& out, int32_t* scratch, const RowSink* sink);

}  // namespace biseam
