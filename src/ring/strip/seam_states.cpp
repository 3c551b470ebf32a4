#include "ring/strip/seam_states.hpp"

#include "base/loop_versions.hpp"

namespace biseam::ring {

namespace {

BISEAM_LOOP uint32_t lesser(uint32_t a, uint32_t b) { return a < b ? a : b; }

BISEAM_LOOP void close_row(uint32_t* row, int low, int high) {
  row[low - 2] = row[low - 1] = row[high + 1] = row[high + 2] = kUnreached;
}

BISEAM_LOOP void fill_states(StripShape shape, const uint16_t* cost, SeamLimits limits, uint32_t* states) noexcept {
  const ptrdiff_t stride = state_stride(shape.width);
  uint32_t* row = states + kStateMargin;
  for (int b = limits.low[0]; b <= limits.high[0]; ++b) {
    row[b] = b >= limits.first && b <= limits.last ? cost[b] : kUnreached;
  }
  close_row(row, limits.low[0], limits.high[0]);
  for (int t = 1; t < shape.length; ++t) {
    const uint32_t* before = row;
    row += stride;
    cost += shape.width;
    const int low = limits.low[t], high = limits.high[t];
    BISEAM_TURNS_APART
    for (int b = low; b <= high; ++b) row[b] = lesser(lesser(before[b - 1], before[b + 1]), before[b]) + cost[b];
    close_row(row, low, high);
  }
}

}  // namespace

constinit const Variants<SeamStates> kSeamStates = short_loop_versions<fill_states, SeamStates>;

}  // namespace biseam::ring
