#pragma once

#include <cstdint>

#include "biseam/records.h"

namespace biseam {

// count columns of table rows [first_row, end_row), in steps of two rows, resampled from source into destination.
struct RemapRegion {
  const float* table;  // u, v pairs, table_width entries a row
  int table_width, table_column;
  const ImageHeader* source;
  const ImageHeader* destination;
  int destination_column, count, first_row, end_row, chroma_x_factor, chroma_y_factor;
};

// What one table row gives of a region's plane: count samples, from every entry for luma, from every second one for chroma
// pairs.  Entries outside the table's row and destinations below the image are left out; an odd height has no half chroma row.
struct RegionRow {
  const float* entries;
  uint8_t* samples;
  int count;
};
RegionRow luma_row_of(const RemapRegion& region, int64_t row);
RegionRow chroma_row_of(const RemapRegion& region, int64_t row);

// Resamples a region.
using SampleRegion = void (*)(const RemapRegion& region);
void remap_region(const RemapRegion& region);

// An edge strip: plain part, then band.  The middle strip: band, plain part, second band.
void remap_edge_strip(const RemapThreadArgs& args, SampleRegion sample);
void remap_middle_strip(const RemapThreadArgs& args, SampleRegion sample);

}  // namespace biseam
