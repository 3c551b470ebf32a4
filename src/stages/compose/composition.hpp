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

// Both blended strips, and the panorama that luma and chroma of them are copied into.
struct Composition {
  const ImageHeader *strips[2], *panorama;
  int offsets[2], gap;  // luma columns, as in PlanePlacement
  int format;
};
void compose_panorama(const Composition& composition);

}  // namespace biseam
