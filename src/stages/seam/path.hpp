#pragma once

#include <algorithm>
#include <cstdint>

#include "biseam/records.h"

namespace biseam {

// Column of a source of that width at which its strip starts; may lie outside.
int64_t strip_first_column(int source_width, int findpath_width, int trans_width, int side) noexcept;

// The column or row of a source of that size that stands for one that may lie outside.
constexpr int32_t nearest_inside(int64_t position, int32_t size) noexcept {
  return static_cast<int32_t>(std::clamp<int64_t>(position, 0, int64_t{size} - 1));
}

// The seam-search strip of a source: side 1 for source 1, 0 for source 2.  The strip's size decides how much is copied; what
// would lie outside the source repeats its edge.
void copy_strip(const BlendImage& source, BlendImage& strip, int findpath_width, int trans_width, int side);

// The fixed mask: weight 64 left of the middle.  The right half is not written.
void fill_left_half(BlendImage& mask);

}  // namespace biseam
