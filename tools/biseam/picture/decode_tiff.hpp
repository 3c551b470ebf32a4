#pragma once

#include "media/container.hpp"

namespace biseam::tool {

// The picture of a TIFF file, in the given stream.  Throws Failure (input) when it is damaged or cut short.
Libav<AVFrame> decode_tiff(Container& source, int stream);

}  // namespace biseam::tool
