// The ring that a camera's lenses share, and where its strips are taken from the pictures.
#pragma once

#include <cstdint>

#include "camera/projector.hpp"
#include "ring/strip/picture.hpp"
#include "ring/strip/shape.hpp"

namespace biseam::ring {

struct RingShape {
  StripShape strip;
  int32_t half_width;  // from the middle to the outermost strip samples, in angles of the mesh
  int32_t ramp;        // that the change from lens to lens takes across the seam, strip samples, Q16
};

// The camera's lenses overlap.  panorama_width: columns.
RingShape ring_shape(const Camera& camera, int panorama_width) noexcept;

// Positions of all strip samples in one lens's picture.
void fill_strip_positions(const Projector& lens, StripShape shape, int32_t* x, int32_t* y) noexcept;

}  // namespace biseam::ring
