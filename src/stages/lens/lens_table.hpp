#pragma once

#include "biseam/records.h"

namespace biseam {

// The rows that a builder's part selects: all, the upper or the lower half.
struct RowRange {
  int first, end;
};
RowRange rows_of_part(const LutBuilderArgs& args);

// Fills the selected rows of one strip's table, width entries a row.
using BuildStrip = void (*)(const LutBuilderArgs& args);
void build_strip(const LutBuilderArgs& args);

// Builds the engine's three tables on four threads.  The entries must be carved; rows past in_h are not built.
void build_tables(const StitchConfig& config, StitchEngine& engine, BuildStrip build);

}  // namespace biseam
