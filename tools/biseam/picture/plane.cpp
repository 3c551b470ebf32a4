#include "picture/plane.hpp"

#include <cstring>

namespace biseam::tool {

void copy_plane(const PlaneView& from, std::uint8_t* to, std::ptrdiff_t stride) {
  for (std::ptrdiff_t y = 0; y < std::ptrdiff_t(from.rows); ++y) {
    std::memcpy(to + y * stride, from.data + y * from.stride, from.width);
  }
}

void join_chroma(const ChromaPlanes& from, std::size_t width, std::size_t rows, std::uint8_t* pairs) {
  for (std::size_t y = 0; y < rows; ++y, pairs += width) {
    const std::uint8_t* cb = from.cb + std::ptrdiff_t(y) * from.cb_stride;
    const std::uint8_t* cr = from.cr + std::ptrdiff_t(y) * from.cr_stride;
    for (std::size_t x = 0; x < width / 2; ++x) {
      pairs[2 * x] = cb[x];
      pairs[2 * x + 1] = cr[x];
    }
  }
}

}  // namespace biseam::tool
