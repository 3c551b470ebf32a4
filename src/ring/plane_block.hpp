#pragma once

#include "ring/paint.hpp"

namespace biseam::ring {

// The samples of one plane in a block.
struct PlaneBlock {
  int plane;
  const PlaneFormat* format;
  int x, y, columns, rows;  // samples or pairs

  PlaneBlock(const Painting& painting, const Block& block, int index) noexcept
      : plane(index),
        format(&painting.panorama.plane[index]),
        x(block.x >> format->grid.bits_x),
        y(block.y >> format->grid.bits_y),
        columns(block.width >> format->grid.bits_x),
        rows(block.height >> format->grid.bits_y) {}

  uint8_t* row_of(const Painting& painting, int row) const noexcept {
    const PanoramaPlane& to = painting.planes[plane];
    return to.first + (y + row) * to.stride + ptrdiff_t{x} * bytes_of(format->type);
  }
};

}  // namespace biseam::ring
