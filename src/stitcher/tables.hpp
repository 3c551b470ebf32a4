#pragma once

#include "biseam/records.h"
#include "biseam/stitcher.hpp"

namespace biseam {

// Tests every entry of a configured engine's tables that a frame reads: the remap itself reads without bounds.
Error check_tables(const StitchEngine& engine);

}  // namespace biseam
