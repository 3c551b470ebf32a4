#pragma once

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

// Resamples one region.  Any function of this type can stand in for sample_region.
using SampleRegion = void (*)(const RemapRegion& region);
void sample_region(const RemapRegion& region);

// An edge strip: plain part, then band.  The middle strip: band, plain part, second band.
void remap_edge_strip(const RemapThreadArgs& args, SampleRegion sample = sample_region);
void remap_middle_strip(const RemapThreadArgs& args, SampleRegion sample = sample_region);

}  // namespace biseam
