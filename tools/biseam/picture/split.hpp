#pragma once

#include <string>

#include "biseam/panorama.h"
#include "media/libav.hpp"

namespace biseam::tool {

// Where the two circles of one picture lie, lens 0 first.
enum class Layout {
  automatic,  // side by side, but in pictures that are higher than wide one above the other; nearly square ones show one lens
  side_by_side,
  top_bottom
};

// Two circles make a picture about twice as long as it is wide.
bool has_both_circles(const AVFrame& picture);

// The two halves, views of the same planes.  Throws Failure (input) naming the file unless both are whole, in all planes, and,
// where the layout is automatic, unless the picture has both circles.
void split(const AVFrame& picture, Layout layout, const std::string& name, BiseamPicture (&halves)[2]);

}  // namespace biseam::tool
