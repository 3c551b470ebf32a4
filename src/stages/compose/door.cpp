// The exported functions that lay strips side by side.
#include "biseam/biseam.h"
#include "stages/compose/composition.hpp"

void ImageCopy(const uint8_t* src, int32_t columns, int32_t rows, int32_t src_stride, uint32_t src_x, uint8_t* dst,
               int32_t dst_stride, int32_t unit, int32_t dst_x) {
  biseam::copy_rectangle(src, columns, rows, src_stride, src_x, dst, dst_stride, unit, dst_x);
}

void BlendPanoWithBiFisheye(uint8_t* const sources[2], const int32_t widths[2], int32_t rows, const int32_t src_strides[2],
                            uint8_t* dst, const int32_t offsets[2], int32_t, int32_t, int32_t dst_stride, int32_t unit,
                            int32_t gap) {
  biseam::place_strips({.sources = {sources[0], sources[1]},
                        .widths = {widths[0], widths[1]},
                        .src_strides = {src_strides[0], src_strides[1]},
                        .offsets = {offsets[0], offsets[1]},
                        .rows = rows,
                        .dst = dst,
                        .dst_stride = dst_stride,
                        .unit = unit,
                        .gap = gap});
}

void StitchingBiFisheyePano(ImageHeader* strip0, ImageHeader* strip1, ImageHeader* pano, int32_t left_inner,
                            int32_t middle_inner, int32_t, int32_t gap, int32_t, int32_t, int32_t format) {
  biseam::compose_panorama(
      {.strips = {strip0, strip1}, .panorama = pano, .offsets = {left_inner, middle_inner}, .gap = gap, .format = format});
}
