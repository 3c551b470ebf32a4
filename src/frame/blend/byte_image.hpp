#pragma once

#include <cstddef>
#include <cstdint>

#include "biseam/records.h"

namespace biseam {

// Bytes in packed pixels of three, in the place of a level's samples, a quarter of which they take.
struct ByteImage {
  uint8_t* data;
  int width, height;

  static ByteImage in(const BlendImage& level) {
    return {reinterpret_cast<uint8_t*>(level.data[0]), level.width, level.height};
  }
  ptrdiff_t row_samples() const { return ptrdiff_t{3} * width; }
  uint8_t* row(int64_t y) const { return data + static_cast<ptrdiff_t>(y) * row_samples(); }
};

}  // namespace biseam
