#pragma once

#include <string>

namespace biseam::tool {

// Of a picture, pixels.
struct Size {
  int width = 0, height = 0;
  bool operator==(const Size&) const = default;
};

// "1920x960"
inline std::string size_text(Size size) { return std::to_string(size.width) + "x" + std::to_string(size.height); }

}  // namespace biseam::tool
