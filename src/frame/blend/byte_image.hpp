#pragma once

#include <cstddef>
#include <cstdint>

namespace biseam {

// Bytes in packed pixels of three.
struct ByteImage {
  uint8_t* data;
  int width, height;

  ptrdiff_t row_samples() const { return ptrdiff_t{3} * width; }
  uint8_t* row(int64_t y) const { return data + static_cast<ptrdiff_t>(y) * row_samples(); }
};

}  // namespace biseam
