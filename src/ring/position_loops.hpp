// Integer cubics between nodes, first down, then across.
#pragma once

#include <cstddef>
#include <cstdint>

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
};

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
// 2^22, so that sums stay below 2^31.
using InterpolateNodes = void(const NodeWindow& window, std::int32_t* const out[2]) noexcept;

extern const Variants<InterpolateNodes> kInterpolateNodes;
InterpolateNodes interpolate_nodes_avx512;

}  // namespace biseam::ring
