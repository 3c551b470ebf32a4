#pragma once

#include <string>
#include <utility>

#include "picture/picture.hpp"

namespace biseam::tool {

// Where the two circles of one picture lie, lens 0 first.
enum class Layout { side_by_side, top_bottom };

// The two halves, views of the same planes.  Throws Failure (input) naming the file unless both halves have even sides.
std::pair<Nv12View, Nv12View> split(const Nv12View& picture, Layout layout, const std::string& name);

}  // namespace biseam::tool
