#pragma once

#include "stages/lens/remap.hpp"

namespace biseam {

// remap_region, by row kernels.  The factors are those of the engine's formats: 2 and 2 or 1.
void sample_region(const RemapRegion& region);

}  // namespace biseam
