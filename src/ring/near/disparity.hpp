// One disparity for every direction round the ring: how far apart the lenses see what lies there.
#pragma once

#include <cstdint>

#include "ring/near/disparity_path.hpp"
#include "ring/near/near_shape.hpp"

namespace biseam::ring {

// In 1/kDisparityOne samples of the search.
inline constexpr int kDisparityBits = 8, kDisparityOne = 1 << kDisparityBits;
// The largest that is found: strips have room to be moved by as much.
constexpr int most_disparity(const NearShape& shape) noexcept {
  return (shape.disparities - 1) * kDisparityOne + kDisparityOne / 2;
}

// Of a frame; sums: by row and disparity, of disparity_rows.hpp.
struct DisparitySearch {
  uint32_t apart[kMostSearchLength][kPathLanes], both[kMostSearchLength][kPathLanes];
  PathCosts costs[kMostSearchLength], memory[kMostSearchLength];
  uint16_t misfits[kMostSearchLength][kPathLanes];  // 1/kMisfitOne
  uint16_t texture[kMostSearchLength];              // 0 .. 256: what of the costs is more than noise may be
  int8_t path[kMostSearchLength];
};

// Rows of the search that are measured together: parts of a frame, which may run at the same time.
inline constexpr int kSearchRows = 16;
constexpr int search_parts(const NearShape& shape) noexcept { return (shape.length + kSearchRows - 1) / kSearchRows; }

// strips: luma of either lens.
void measure_disparities(const NearShape& shape, const int16_t* const (&strips)[2], int part, DisparitySearch& search) noexcept;

// After all parts.  disparities: length of them, 0 where nothing is known.
void find_disparities(const NearShape& shape, DisparitySearch& search, int16_t* disparities) noexcept;

}  // namespace biseam::ring
