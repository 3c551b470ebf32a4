#pragma once

#include <cstdint>

#include "base/variants.hpp"

namespace biseam::ring {

// How much a seam through a strip sample is disliked for where it is, in units of the difference it hides (1/64 code of 8 bits)
// per sample of distance.
struct SeamPull {
  int hold;    // from the last path; 0 for none, at most kMaxPull
  int middle;  // from the middle, at most kMaxPull
};
inline constexpr int kMaxPull = 1 << 16;

// Differences of the lenses (lens 1 minus lens 0) round row t.
struct DifferenceRows {
  const int16_t *before, *here, *after;  // luma at t - 1, t, t + 1
  const int16_t* chroma[2];              // at t; null for gray
};

// cost[b]: half of the luma difference, a quarter of each chroma difference and of the difference of either luma gradient (over
// two samples, repeated at the strip's edges), plus the pulls; at most 65535.  last: the last path's row.
using SeamCostRow = void(const DifferenceRows& rows, SeamPull pull, int last, uint16_t* cost, int width) noexcept;

extern constinit const Variants<SeamCostRow> kSeamCostRow;

}  // namespace biseam::ring
