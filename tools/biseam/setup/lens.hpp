// One lens with every value settled.
#pragma once

#include "base/size.hpp"
#include "biseam/panorama.h"
#include "profile/settings.hpp"

namespace biseam::tool {

// Fills what is open: the middle of the picture, and a circle of fov degrees that just fits around the centre.
// index and recorded are told in a notice of what was assumed.  Throws Failure (settings) for a centre outside the picture that
// no circle fits around.
BiseamLens settle_lens(const profile::LensSettings& settings, Size recorded, int index);

}  // namespace biseam::tool
