#pragma once

#include "picture/picture.hpp"

namespace biseam::tool {

// The picture as it is meant to be seen.  orientation: Exif's, 1 to 8; 1 is upright already.
Nv12 upright(Nv12 picture, int orientation);

}  // namespace biseam::tool
