#pragma once

#include <cstdint>

#include "biseam/records.h"

namespace biseam {

// Reduces a source widened to the band, without making the band: rows are summed before they are widened.  The source is
// widened exactly; reduced has half the band's size, rounded up.  With trans_width 0 any packed image is reduced.  sums:
// scratch for one row of the band.
void reduce_widened(const BlendImage& source, int trans_width, int side, BlendImage& reduced, int32_t* sums);

}  // namespace biseam
