#pragma once

#include <string>

namespace biseam::tool {

// Gives a new file what the one that it is about to replace has besides its bytes: owner, mode, extended attributes, access
// control lists.  What isn't permitted, and what the file system doesn't know, is left out.  False, with errno, when the mode
// can't be set.
bool copy_traits(const std::string& from, int to);

}  // namespace biseam::tool
