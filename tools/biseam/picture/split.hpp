#pragma once

#include <string>

#include "biseam/panorama.h"
#include "media/libav.hpp"

namespace biseam::tool {

// Where the two circles of one picture lie, lens 0 first.
enum class Layout {
  automatic,  // side by side, but in pictures that are higher than wide one above the other
  side_by_side,
  top_bottom
};

// The two halves, views of the same planes.  Throws Failure (input) naming the file unless both are whole, in all planes.
void split(const AVFrame& picture, Layout layout, const std::string& name, BiseamPicture (&halves)[2]);

}  // namespace biseam::tool
