#pragma once

#include <cstddef>
#include <cstdint>

#include "ring/strip/shape.hpp"

namespace biseam::ring {

// Working memory of a search, 64-byte aligned.
size_t seam_search_bytes(StripShape shape) noexcept;

// The closed path with the least sum of costs: path[t] is the strip row b of each t, in [margin, width - 1 - margin]; it steps
// by at most 1 from t to t + 1 and from the last t to the first.  Exact; among equals always the same one.  cost: length x
// width. Returns the sum.
uint32_t find_seam(StripShape shape, const uint16_t* cost, int margin, void* memory, int16_t* path) noexcept;

}  // namespace biseam::ring
