#pragma once

#include "biseam/records.h"

namespace biseam {

// Bands become RGB bytes right where their blend starts from them, in the levels 0 of their pyramids, widened; not 32-bit
// images that would be narrowed again.

// Whether both bands of an overlap can: even sizes, records as the engine lays them out, levels that a band can be streamed
// through.  format: the bands', U, V order.
bool takes_bytes(const StitchEngine& engine, int overlap, int format);

// One band, 0 .. 3.
void convert_to_bytes(StitchEngine& engine, int band, int format);

}  // namespace biseam
