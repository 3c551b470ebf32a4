#pragma once

#include <cstdint>

#include "biseam/records.h"

namespace biseam {

// Widens a source to the band by trans_width columns that mirror its inner edge, the edge column repeated once: at the right
// for side 1 (source 1), at the left for side 0.  The band is trans_width columns wider than the source; with any other sizes
// columns and rows outside the source are taken from its edge.
void widen(const BlendImage& source, BlendImage& band, int trans_width, int side);

// Whether a source gives all of a band of that width in this way: pixels of three samples without gaps, as many columns as
// the band less trans_width, at least trans_width of them.
bool is_widened_exactly(const BlendImage& source, int band_width, int trans_width);

// The same for one row of packed pixels, of which all but the mirrored ones are there already, from column
// covered_column(trans_width, side) on.
void mirror_edge(int32_t* row, int band_width, int trans_width, int side) noexcept;

// First column of the band that the source itself covers.
constexpr int covered_column(int trans_width, int side) { return side == 1 ? 0 : trans_width; }

}  // namespace biseam
