#pragma once

#include <cstddef>
#include <cstdint>

#include "ring/strip/low_band.hpp"
#include "ring/strip/picture.hpp"
#include "ring/strip/reduction.hpp"
#include "ring/strip/shape.hpp"

namespace biseam::ring {

// What the strips of an engine are made from.
struct StripConfig {
  StripShape shape;
  int planes;  // 3, or 1 for gray
  PlaneGeometry geometry[2][kMaxPlanes];
};

// Decided once per camera and panorama size.
struct StripPlan {
  StripConfig config;
  Reduction reductions[2][kMaxPlanes];

  // Rows at either side of the strip that the seam keeps off and over which corrections fade.
  int edge() const noexcept { return config.shape.width / 4; }
};

// Pictures are reduced by the power of two that is at most 5/4 of the mean distance between neighbouring positions, at most
// kMaxReduction.  Positions stay the caller's.
StripPlan plan_strips(const StripConfig& config, const StripPositions (&positions)[2]) noexcept;

// Views into the one block of strips.
//
// | piece                                      | written by            | read by              | lives                    |
// |--------------------------------------------|-----------------------|----------------------|--------------------------|
// | needed, fade                               | lay_out_strips        | reduce, blend        | as long as the plan      |
// | strips                                     | unroll, compare       | compare, caller      | until the next unroll    |
// | difference                                 | compare               | seam, blend          | until the next compare   |
// | path                                       | seam                  | blend, caller        | until the next seam      |
// | corrections                                | blend                 | caller               | until the next blend     |
// | reduced                                    | reduce                | unroll               | shares its place with... |
// | cost, search, rows, difference_pyramid, weights | seam             | seam, blend          | ...these                 |
struct StripViews {
  uint8_t* needed[2][kMaxPlanes];
  int16_t* fade;
  int16_t* strips[2][kMaxPlanes];
  int16_t* difference[kMaxPlanes];
  int32_t* path;  // length + 1 rows, Q16; the last is the first
  int16_t* corrections[2][kMaxPlanes];
  int16_t* reduced[2][kMaxPlanes];
  uint16_t* cost;
  void* search;
  int16_t* rows;
  StripPyramid difference_pyramid[kMaxPlanes], weights;
};

// Bytes of the block, to be aligned to 64.
size_t strip_memory_bytes(const StripPlan& plan) noexcept;

// The views into a block, and what is made once.  Whatever the block holds.
StripViews lay_out_strips(const StripPlan& plan, const StripPositions (&positions)[2], void* block) noexcept;

}  // namespace biseam::ring
