#pragma once

#include "compare/metrics.hpp"

namespace biseam::tool {

// As Quality::ssim.
double structural_similarity(const LumaPair& pair, const Columns& columns);

}  // namespace biseam::tool
