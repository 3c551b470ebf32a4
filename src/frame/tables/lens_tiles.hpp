#pragma once

#include "biseam/records.h"

namespace biseam {

// build_strip, by row kernels over tiles of the table.
void build_strip_by_tiles(const LutBuilderArgs& args);

}  // namespace biseam
