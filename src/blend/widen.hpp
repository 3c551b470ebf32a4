#pragma once

#include "biseam/records.h"

namespace biseam {

// Widens a source to the band by trans_width columns that mirror its inner edge, the edge column repeated once: at the right
// for side 1 (source 1), at the left for side 0.  The band is trans_width columns wider than the source; with any other sizes
// columns and rows outside the source are taken from its edge.
void widen(const BlendImage& source, BlendImage& band, int trans_width, int side);

}  // namespace biseam
