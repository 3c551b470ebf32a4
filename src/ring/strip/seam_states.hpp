#pragma once

#include <cstdint>

#include "base/variants.hpp"
#include "ring/strip/shape.hpp"

namespace biseam::ring {

// Sums of the search for a seam: row t holds, for every strip row b, the least sum of a path from t = 0 that is in b at t.
inline constexpr int kStateMargin = 2;  // columns on either side that no path reaches
inline constexpr uint32_t kUnreached = 1u << 30;
// No path that is allowed costs as much; nor do sums over what is not reached leave 32 bits.
static_assert(uint32_t{kMaxStripLength} * 65535 < kUnreached);

constexpr int state_stride(int width) { return width + 2 * kStateMargin; }

// Where paths may run: from low[t] to high[t], each of which steps by at most 1, beginning in [first, last].
struct SeamLimits {
  const int16_t *low, *high;
  int first, last;
};

// Fills states: length x state_stride(width).
using SeamStates = void(StripShape shape, const uint16_t* cost, SeamLimits limits, uint32_t* states) noexcept;

extern constinit const Variants<SeamStates> kSeamStates;

}  // namespace biseam::ring
