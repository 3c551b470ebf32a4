#pragma once

#include "biseam/records.h"

namespace biseam {

// The mapping of one panorama position by the maths library.
void map_position(float x, float y, float& u, float& v, const LensRecord& lens);

}  // namespace biseam
