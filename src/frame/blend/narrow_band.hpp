#pragma once

#include "biseam/records.h"
#include "frame/blend/row_sink.hpp"

namespace biseam {

// blend_streamed for sources of bytes and weights of 64 at most, as an engine's are: levels lie as bytes where those of 32-bit
// samples would be, which leaves about half of the traffic.  The same samples come out.  False where a sample of a source or
// the mask is out of range: nothing but levels has been written then.  With a sink all rows go there instead of
// an output of exactly the height.
// Null sources lie in the levels 0 already, as bytes and widened.
bool blend_narrow(BlendInstance& instance, const BlendImage* const sources[2], BlendImage& output,
                  const RowSink* sink = nullptr);

}  // namespace biseam
