#pragma once

#include "biseam/records.h"
#include "biseam/stitcher.hpp"

namespace biseam {

// Tests the configuration against every rule that the engine relies on and does not test itself; the first broken one is told.
// Allocates nothing and reads no picture.
Error check_rules(const StitchConfig& config);

}  // namespace biseam
