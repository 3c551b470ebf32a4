#pragma once

#include "biseam/records.h"

namespace biseam {

// Sine and cosine of a panorama row's latitude.  Row 0 is one step below the pole, the last row exactly at the other.
struct Latitude {
  float sine, cosine;
};
Latitude row_latitude(const LensRecord& lens, int row);

// Sines and cosines of the longitudes of count columns, which are the same for every row.  first: a multiple of four, as every
// fourth longitude comes from the column's index and the others by addition.
void turn_columns(const LensRecord& lens, int first, int count, double* sines, double* cosines) noexcept;

// Fills count pairs u, v of a table row from the columns' sines and cosines.  scale: pixels per radian of angle from the
// optical axis.
void map_row(const LensRecord& lens, float scale, Latitude latitude, const double* sines, const double* cosines, int count,
             float* entries) noexcept;

}  // namespace biseam
