// The closed path of disparities round the ring that costs least.
#pragma once

#include <cstdint>

#include "base/variants.hpp"
#include "ring/near/near_shape.hpp"

namespace biseam::ring {

// Costs of a place, by disparity; those past the last one mean nothing.
inline constexpr int kPathLanes = 16;
struct PathCosts {
  int32_t values[kPathLanes];
};
static_assert(kMostDisparities <= kPathLanes);

// What it costs to go from one disparity to another from place to place: kStepCost for each sample, kJumpCost at most.
inline constexpr int32_t kStepCost = 512, kJumpCost = 4 * kStepCost;

// Sums of the paths to every disparity, in columns by the disparity that they began with.
struct PathSums {
  alignas(64) int32_t values[kPathLanes][kPathLanes];
};

// Goes on from sums, of one place, over the next count places.  recorded: null, or the sums of one column at each of them.
using ExtendPaths = void(const PathCosts* costs, int count, int disparities, PathSums& sums, int column,
                         PathCosts* recorded) noexcept;
extern constinit const Variants<ExtendPaths> kExtendPaths;

// Exact; among equals always the same.  costs: of length places, each below 2^16; memory: room for as many; path: length
// disparities.
void find_disparities(const PathCosts* costs, int length, int disparities, PathCosts* memory, int8_t* path) noexcept;

}  // namespace biseam::ring
