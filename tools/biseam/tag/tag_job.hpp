// What `biseam tag` works on, and what it says about pictures and clips alike.
#pragma once

#include <string>

#include "picture/picture.hpp"

namespace biseam::tool {

struct TagJob {
  std::string from, to;
  bool in_place = false;  // both are the same file
};

// A file that is marked already stays as it is, or is copied, so that a second run changes no byte; says so.  Throws Failure.
void keep_marked(const TagJob& job);

// Throws Failure (input) unless the sides are those of a whole sphere.  Not asked of what is marked as a part of one.
void check_sides(const TagJob& job, Size size);

// Says that a file was something else before.
void tell_old_projection(const TagJob& job, const std::string& projection);

}  // namespace biseam::tool
