#pragma once

#include <cstddef>
#include <cstdint>

#include "biseam/records.h"

namespace biseam {

// An interleaved chroma pair, moved as one unit.  No alignment is asked of chroma planes.
struct PlanePair {
  uint8_t first, second;
};

// Width and stride in elements.
template <class Element>
struct PlaneView {
  Element* data;
  int width, stride, height;

  Element* row(int y) const { return data + static_cast<std::ptrdiff_t>(stride) * y; }
};

// What moves with an image: luma bytes and chroma pairs.  Both are empty for planar, packed and unknown formats, which stay as
// they are.
struct MovedPlanes {
  PlaneView<uint8_t> luma;
  PlaneView<PlanePair> chroma;
};
MovedPlanes moved_planes(const ImageHeader& image);

// In place: row i with row height - 1 - i, element by element, which settles the result where rows overlap.
void flip_plane(const PlaneView<uint8_t>& plane);
void flip_plane(const PlaneView<PlanePair>& plane);

// In place: element k of every row with element width - 1 - k.
void mirror_plane(const PlaneView<uint8_t>& plane);
void mirror_plane(const PlaneView<PlanePair>& plane);

}  // namespace biseam
