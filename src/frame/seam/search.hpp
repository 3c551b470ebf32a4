#pragma once

#include "base/memory_report.hpp"
#include "base/status.hpp"
#include "biseam/records.h"

namespace biseam {

// Finds the seam between the sources of a band and makes it the instance's mask.  Weights of earlier frames stay in both masks.
// Null sources lie in the levels 0 of their pyramids as bytes, widened.
// no_memory: the masks are as they were, the instance stays usable.
Status search_seam(BlendInstance& instance, const BlendImage* const sources[2], MemoryReport report);

}  // namespace biseam
