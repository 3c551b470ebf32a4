// Pictures in any format that libav recognises by its content.
#pragma once

#include "media/container.hpp"
#include "picture/picture.hpp"

namespace biseam::tool {

// The first picture of a still or a film.  8-bit 4:2:0 in full-range BT.601 (most JPEG files) is taken sample for sample,
// everything else by way of RGB; a last odd row or column is dropped, transparency ignored.  A damaged or truncated
// picture is refused.
Nv12 decode_picture(Container& source);

}  // namespace biseam::tool
