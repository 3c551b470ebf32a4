// Memory that a block of the panorama needs, asked for while the one before is painted: a block's rows lie far apart in
// pictures and panorama, and processors don't foresee that.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ring/blocks.hpp"
#include "ring/paint.hpp"

namespace biseam::ring {

// Brings near what the block's samples are taken from and the places where they go.  No result depends on it.
void prefetch_block(const Painting& painting, const BlockPlan& plan) noexcept;

// Rows of bytes of a picture's plane.
struct PlaneBytes {
  const uint8_t* first;
  ptrdiff_t stride;  // bytes from a row to the one below, of any sign
  int rows;
  ptrdiff_t bytes;  // of a row
};

// What of a plane lies in a box or a sample beside it: at least one sample.  grid: the plane's.
PlaneBytes bytes_in_box(const SampleSource& plane, const PlaneGrid& grid, const PictureBox& box) noexcept;

}  // namespace biseam::ring
