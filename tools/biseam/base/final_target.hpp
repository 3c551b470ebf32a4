#pragma once

#include <string>

namespace biseam::tool {

// The absolute path at which a file written under this name comes to lie: links are followed, the last one even when it leads
// to nothing.  Where the folder can't be found, the path that names it.
std::string final_target(const std::string& path);

}  // namespace biseam::tool
