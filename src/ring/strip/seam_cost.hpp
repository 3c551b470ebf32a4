#pragma once

#include <cstdint>

#include "base/variants.hpp"

namespace biseam::ring {

// How much a seam may be drawn to the strip's middle, at most: in units of the difference it hides (1/64 code of 8 bits) per
// sample of distance.
inline constexpr int kMaxPull = 1 << 16;

// Differences of the lenses (lens 1 minus lens 0) round row t.
struct DifferenceRows {
  const int16_t *before, *here, *after;  // luma at t - 1, t, t + 1
  const int16_t* chroma[2];              // at t; null for gray
};

// cost[b]: half of the luma difference, a quarter of each chroma difference and of the difference of either luma gradient (over
// two samples, repeated at the strip's edges), plus the pull to the middle; at most 65535.
using SeamCostRow = void(const DifferenceRows& rows, int pull, uint16_t* cost, int width) noexcept;

extern constinit const Variants<SeamCostRow> kSeamCostRow;

}  // namespace biseam::ring
