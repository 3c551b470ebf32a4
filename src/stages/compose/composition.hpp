#pragma once

#include <cstdint>

#include "biseam/records.h"

namespace biseam {

// Copies rows of columns * unit bytes; strides in bytes, columns in units.  Source and destination don't overlap.
void copy_rectangle(const uint8_t* src, int columns, int rows, int src_stride, uint32_t src_x, uint8_t* dst, int dst_stride,
                    int unit, int dst_x);

// One plane of the panorama, and the two strips to be placed in it: strip 1 lies offsets[1] units behind the gap that follows
// offsets[0].
struct PlanePlacement {
  const uint8_t* sources[2];
  int widths[2], src_strides[2], offsets[2];
  int rows;
  uint8_t* dst;
  int dst_stride, unit, gap;
};
void place_strips(const PlanePlacement& placement);

// Copies both blended strips into the panorama, luma and chroma.  gap: width of a strip in luma columns.
void compose_panorama(const ImageHeader& strip0, const ImageHeader& strip1, const ImageHeader& pano, int left_inner,
                      int middle_inner, int gap, int format);

}  // namespace biseam
