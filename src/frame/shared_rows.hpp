#pragma once

#include <algorithm>

#include "biseam/records.h"

namespace biseam {

// Rows that tables, bands and panorama all have.
inline int shared_rows(const StitchEngine& engine) { return std::min(engine.config->in_h, engine.config->out_h[0]); }

}  // namespace biseam
