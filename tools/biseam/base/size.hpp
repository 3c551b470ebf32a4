#pragma once

namespace biseam::tool {

// Of a picture, pixels.
struct Size {
  int width = 0, height = 0;
  bool operator==(const Size&) const = default;
};

}  // namespace biseam::tool
