#pragma once

#include "biseam/records.h"

namespace biseam {

// One band, 0 .. 3, of even sizes becomes RGB bytes right where its blend starts from them, in the level 0 of its pyramid,
// widened; not a 32-bit image that would be narrowed again.  format: the bands', U, V order.
void convert_to_bytes(StitchEngine& engine, int band, int format);

}  // namespace biseam
