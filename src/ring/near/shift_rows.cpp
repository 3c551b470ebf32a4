#include "ring/near/shift_rows.hpp"

#include <algorithm>

#include "base/loop_versions.hpp"

namespace biseam::ring {

namespace {

BISEAM_LOOP void mix_neighbours(const int16_t* samples, int fraction, int16_t* out, int count) noexcept {
  BISEAM_TURNS_APART
  for (ptrdiff_t i = 0; i < count; ++i) {
    out[i] = static_cast<int16_t>((samples[i] * (256 - fraction) + samples[i + 1] * fraction + 128) >> 8);
  }
}

}  // namespace

constinit const Variants<MixNeighbours> kMixNeighbours = loop_versions<mix_neighbours, MixNeighbours>;

void shift_row(int lens, int32_t displacement, int16_t* row, int width) noexcept {
  const int32_t steps = (displacement + 128) >> 8;
  if (steps == 0) return;
  int16_t moved[kMaxStripWidth];
  // Whole samples and the rest, and the samples that both lenses have.
  const int edge = (steps + 255) >> 8, count = width - 2 * edge, shift = lens == 0 ? steps : -steps;
  kMixNeighbours.best()(row + edge + (shift >> 8), shift & 255, moved, count - 1);
  // The last one may be the row's last, which has no neighbour.
  const int16_t* const last = row + edge + count - 1 + (shift >> 8);
  const int fraction = shift & 255;
  moved[count - 1] = fraction == 0 ? *last : static_cast<int16_t>((last[0] * (256 - fraction) + last[1] * fraction + 128) >> 8);
  std::copy_n(moved, count, row + edge);
  std::fill_n(row, edge, moved[0]);
  std::fill_n(row + edge + count, edge, moved[count - 1]);
}

}  // namespace biseam::ring
