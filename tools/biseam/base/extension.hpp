#pragma once

#include <string>

namespace biseam::tool {

// ".jpg" of "a/B.JPG"; empty where the name has none.
std::string extension_of(const std::string& path);

}  // namespace biseam::tool
