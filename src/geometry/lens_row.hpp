#pragma once

#include "biseam/records.h"

namespace biseam {

// Sine and cosine of a panorama row's latitude.  Row 0 is one step below the pole, the last row exactly at the other.
struct Latitude {
  float sine, cosine;
};
Latitude row_latitude(const LensRecord& lens, int row);

// Fills one table row: width pairs u, v.  scale: pixels per radian of angle from the optical axis.
void map_row(const LensRecord& lens, float scale, Latitude latitude, int width, float* entries) noexcept;

}  // namespace biseam
