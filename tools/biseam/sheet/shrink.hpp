#pragma once

#include "picture/picture.hpp"

namespace biseam::tool {

// The picture at another size, every pixel the mean of the area it covers.  For making pictures smaller.
Rgb shrunk(const Rgb& picture, Size to);

}  // namespace biseam::tool
