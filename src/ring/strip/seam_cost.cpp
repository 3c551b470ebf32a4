#include "ring/strip/seam_cost.hpp"

#include "base/loop_versions.hpp"

namespace biseam::ring {

namespace {

BISEAM_LOOP int32_t magnitude(int32_t value) { return value < 0 ? -value : value; }

// left and right: luma on either side.
template <bool colour>
BISEAM_LOOP uint16_t cost_of(const DifferenceRows& rows, int pull, int width, int b, int left, int right) {
  int32_t cost = 2 * magnitude(rows.here[b]) + magnitude(rows.after[b] - rows.before[b]) + magnitude(right - left);
  if constexpr (colour) cost += magnitude(rows.chroma[0][b]) + magnitude(rows.chroma[1][b]);
  cost = (cost >> 2) + (pull * magnitude(2 * b - (width - 1)) >> 1);
  return static_cast<uint16_t>(cost < 65535 ? cost : 65535);
}

template <bool colour>
BISEAM_LOOP void fill_row(const DifferenceRows& rows, int pull, uint16_t* cost, int width) {
  const int16_t* here = rows.here;
  cost[0] = cost_of<colour>(rows, pull, width, 0, here[0], here[width > 1 ? 1 : 0]);
  BISEAM_TURNS_APART
  for (int b = 1; b < width - 1; ++b) cost[b] = cost_of<colour>(rows, pull, width, b, here[b - 1], here[b + 1]);
  if (width > 1) cost[width - 1] = cost_of<colour>(rows, pull, width, width - 1, here[width - 2], here[width - 1]);
}

BISEAM_LOOP void seam_cost_row(const DifferenceRows& rows, int pull, uint16_t* cost, int width) noexcept {
  rows.chroma[0] != nullptr ? fill_row<true>(rows, pull, cost, width) : fill_row<false>(rows, pull, cost, width);
}

}  // namespace

constinit const Variants<SeamCostRow> kSeamCostRow = loop_versions<seam_cost_row, SeamCostRow>;

}  // namespace biseam::ring
