#pragma once

#include "media/libav.hpp"

namespace biseam::tool {

// The picture, in a working format, as it is meant to be seen.  orientation: Exif's, 1 to 8; 1 is upright already.  Loses
// nothing; chroma of half width becomes that of full size where the picture is turned on its side.
Libav<AVFrame> upright(Libav<AVFrame> picture, int orientation);

}  // namespace biseam::tool
