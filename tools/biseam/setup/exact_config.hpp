#pragma once

#include "biseam/records.h"
#include "setup/setup.hpp"

namespace biseam::tool {

// The exact engine's configuration for pictures that it takes as they are: 4:2:0 of 8 bits, upright, of one size, as high as
// the panorama, by equidistant lenses of which only lens 1 is turned, about its axis.  Rows without padding.  Throws Failure
// (settings) with what does not fit, or when the lenses don't overlap.
StitchConfig exact_config(const Setup& setup, BiseamFormat format);

}  // namespace biseam::tool
