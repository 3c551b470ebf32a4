#pragma once

#include "biseam/records.h"

namespace biseam {

// Whether the instance's strips have room for what a search works in: those of a search on enlarged strips, or on a few rows,
// have not.
bool can_search_bytes(const BlendInstance& instance);

// Finds the seam between the sources of a band and makes it the instance's mask, as make_mask does; they lie in the levels 0 of
// their pyramids as bytes, widened.  Weights of earlier frames stay in both masks.
void search_bytes(BlendInstance& instance);

}  // namespace biseam
