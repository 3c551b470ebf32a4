#pragma once

#include "base/variants.hpp"
#include "stages/lens/lens_entry.hpp"

namespace biseam {

// Sines and cosines of the longitudes of count columns, which are the same for every row.
void turn_columns(const LensRecord& lens, int first, int count, double* sines, double* cosines) noexcept;

// Fills count pairs u, v of a table row from the columns' sines and cosines.  scale: lens_scale.
using MapRow = void(const LensRecord& lens, float scale, Latitude latitude, const double* sines, const double* cosines,
                    int count, float* entries) noexcept;
MapRow map_row_scalar, map_row_avx2, map_row_avx512;
MapRow map_row_neon;  // 64-bit ARM

extern const Variants<MapRow> kMapRow;

}  // namespace biseam
