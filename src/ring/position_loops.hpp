// Integer cubics between nodes, first down, then across.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "base/isa.hpp"
#include "base/variants.hpp"

namespace biseam::ring {

// Samples along one direction of a block.  Positions count in half luma pixels from the first node that bounds the block.
struct SampleRun {
  int start, step;  // 0 <= start < 2^bits; a power of 2
  int count;
};

// What nodes have of one coordinate.
struct NodeValues {
  const std::int32_t* first;  // of the node two left of and two above the one where the runs start
  // A node's value n is taken as (n - offset) / 2^halvings, rounded half up; halvings is 0 or 1.
  int offset, halvings;
  // Bits by which values fall short of 32 and wrap around: a cubic takes its nodes as near to each other as they can be.
  int wrapped_bits;
  // Of fractions.  What lies between two nodes stays below 2^(26 - slope_bits), and what it differs by from one pair of nodes
  // to the next below 2^(24 - slope_bits).
  int slope_bits;
};

// Samples of a run that lie between node number index and the next one.
struct Stretch {
  int first, end;  // of the run's samples
  int place;       // of the first
};

BISEAM_INLINED Stretch stretch_of(const SampleRun& run, int index, int bits) noexcept {
  const auto samples_before = [&](int node) {
    const int count = ((node << bits) - run.start + run.step - 1) >> std::countr_zero(static_cast<unsigned>(run.step));
    return count < 0 ? 0 : count > run.count ? run.count : count;
  };
  const int first = samples_before(index);
  return {first, samples_before(index + 1), run.start + first * run.step - (index << bits)};
}

// A block's rows, of those that a stretch has.
struct StretchRows {
  int before, count;
};

BISEAM_INLINED StretchRows rows_of(const Stretch& stretch, int step) noexcept {
  return {stretch.place / step, stretch.end - stretch.first};
}

// Between nodes, the first sample's and the last one's included.
BISEAM_INLINED int stretches(const SampleRun& run, int bits) noexcept {
  return ((run.start + (run.count - 1) * run.step) >> bits) + 1;
}

// By how many bits samples stand closer than nodes.  Where they don't, no two lie in one stretch.
BISEAM_INLINED int bits_closer(const SampleRun& run, int bits) noexcept {
  const int closer = bits - std::countr_zero(static_cast<unsigned>(run.step));
  return closer > 0 ? closer : 0;
}

// Both coordinates of a block's samples.
struct NodeWindow {
  std::ptrdiff_t stride;  // from one row of nodes to the next
  int bits;               // nodes are 2^bits half luma pixels apart
  SampleRun across, down;
  NodeValues values[2];
};

// out, by coordinate: rows of kBlockWidth values.  Each cubic goes through the two nodes on either side, with the slope there
// that a quartic through five nodes has: next to the cubic through four it errs by an eighth.  With v(u) = A + u (B + u (C + u
// D)), each coefficient an integer, the products are rounded half up to integers.  |B| is held below 2^24, |C| and |D| below
// 2^22, so that sums stay below 2^31.  Down, each column of nodes tells its value where a stretch between two nodes has its
// first sample, in this block or not, and by which differences of first, second and third order it goes on from there, in
// units of 2^-slope_bits for all samples between two nodes, the third in 2^-kThirdBits of these, rounded half up.  Across,
// these four are interpolated; columns of samples then go on by three sums a sample.
using InterpolateNodes = void(const NodeWindow& window, std::int32_t* const out[2]) noexcept;

inline constexpr int kThirdBits = 4;

extern const Variants<InterpolateNodes> kInterpolateNodes;
InterpolateNodes interpolate_nodes_avx512;

}  // namespace biseam::ring
