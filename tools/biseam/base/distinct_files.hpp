// Outputs that would destroy an input, or one another.
#pragma once

#include <string>
#include <vector>

namespace biseam::tool {

struct NamedFile {
  std::string role, path;  // as the user knows it, "-o" or "the input"; an empty path names nothing, "-" a standard stream
};

// Throws Failure (usage) naming both when an output is an input or another output, under whatever names: the same file by
// device and inode, or, where nothing is yet, the same place.  Only regular files count; a device takes what it is given.
void check_distinct(const std::vector<NamedFile>& inputs, const std::vector<NamedFile>& outputs);

}  // namespace biseam::tool
