#pragma once

#include "biseam/records.h"

namespace biseam::test {

// A 480 x 240 panorama of two 240 x 240 fisheyes, whole in every field.
inline StitchConfig small_config() {
  StitchConfig c{};
  c.in_h = c.in_w = c.in_luma_stride = c.in_chroma_stride = 240;
  c.out_h[0] = 240;
  c.out_w[0] = c.out_luma_stride[0] = c.out_chroma_stride[0] = 480;
  c.p0 = c.p1 = 60;
  c.cx0 = c.cy0 = c.cx1 = c.cy1 = 120;
  c.lens_matrix[0] = c.lens_matrix[4] = c.lens_matrix[8] = 1;
  c.change_focus = 1;
  c.feather = 16;
  c.trans_width = 32;
  c.findpath_width = 32;
  c.pyr_level = 3;
  c.findpath_enable = 1;
  c.inv_scale = 2;
  return c;
}

}  // namespace biseam::test
