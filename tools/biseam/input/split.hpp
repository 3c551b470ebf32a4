#pragma once

#include <string>
#include <utility>

#include "picture.hpp"

namespace biseam::tool {

// The left and the right half.  Throws Failure (input) naming the file unless both halves have an even width.
std::pair<Nv12, Nv12> split_side_by_side(const Nv12& picture, const std::string& name);

}  // namespace biseam::tool
