#pragma once

#include "biseam/records.h"

namespace biseam {

// Whether blend_streamed gives what widening, decomposing, mixing and collapsing give: sources that belong to the band, an
// output of its size, records as layout_blend writes them, no level that the pyramid routines leave alone, no memory shared.
bool can_be_streamed(const BlendInstance& instance, const BlendImage* const sources[2], const BlendImage& output);

// Blends the sources under the instance's mask, row by row: no widened sources, no Laplacian levels, nothing from the heap.
// Levels from the first on hold Gaussian pyramids of the sources and the mask, and the collapsed one; scratch rows lie where
// the levels 0 would be.
void blend_streamed(BlendInstance& instance, const BlendImage* const sources[2], BlendImage& output);

}  // namespace biseam
