#pragma once

#include "biseam/records.h"
#include "frame/blend/row_sink.hpp"

namespace biseam {

// Whether blend_bytes gives what the stages give, and has room for it: sources that belong to the band, no level that the
// pyramid routines leave alone, scratch enough.
bool can_blend_bytes(const BlendInstance& instance);

// One band under the instance's mask, row by row: no widened sources, no Laplacian levels, nothing from the heap.  Its sources
// lie in the levels 0 of their pyramids as bytes, widened; its rows go to the sink.  False where a weight is above 64 or
// negative: nothing but levels has been written then.
bool blend_bytes(BlendInstance& instance, const RowSink& sink);

}  // namespace biseam
