#pragma once

#include "biseam/records.h"
#include "stages/format/convert.hpp"

// Bands as 32-bit images, where a frame can't go by bytes.  format: the bands', U, V order.
namespace biseam {

// One of the four bands to RGB.
inline void convert_to_integers(StitchEngine& e, int band, int format) {
  convert_image(&e.band_yuv[band], &e.band_rgb[band], e.band_rgb[band].type | format << 4);
}

// A blended overlap to its YUV strip.
inline void convert_to_yuv(StitchEngine& e, int overlap, int format) {
  convert_image(&e.blend_out[overlap], &e.blend_yuv[overlap], format | e.blend_out[overlap].type << 4);
}

}  // namespace biseam
