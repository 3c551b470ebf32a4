// Pictures in any format that libav recognises by its content.
#pragma once

#include "media/container.hpp"
#include "picture/picture.hpp"

namespace biseam::tool {

struct DecodedPicture {
  Nv12 samples;
  int bits = 8;  // of a sample in the file
};

// The first picture of a still, or of a film, as it is to be shown.  8-bit 4:2:0 in full-range BT.601 (most JPEG files) is
// taken sample for sample, everything else by way of RGB; a last odd row or column is dropped, transparency ignored.  Samples
// of more than 8 bits are rounded.  A damaged or truncated picture is refused.
DecodedPicture decode_picture(Container& source);
DecodedPicture decode_picture(Container& source, int stream);

}  // namespace biseam::tool
