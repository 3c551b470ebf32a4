// The nodes of one row of a mesh.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/variants.hpp"
#include "camera/projector.hpp"
#include "ring/mesh.hpp"

namespace biseam::ring {

// Half away from zero.
inline std::int32_t mesh_rounded(double value) noexcept { return static_cast<std::int32_t>(value + (value < 0 ? -0.5 : 0.5)); }

// A node's position.
inline std::int32_t mesh_position(double pixels) noexcept {
  const double low = pixels < -kFarthest ? -kFarthest : pixels;
  return mesh_rounded((low > kFarthest ? kFarthest : low) * (1 << kPositionBits));
}

// Directions that share a latitude, before the panorama is turned.
struct NodeRow {
  const double *sines, *cosines;  // of the longitudes
  SineCosine latitude;
  std::ptrdiff_t count;
};

// x, y: the positions of the row's directions, see mesh.hpp.  to_picture: from the panorama to the lens's picture.
using LensNodeRow = void(const NodeRow& row, const Projector& lens, const Matrix3& to_picture, std::int32_t* x,
                         std::int32_t* y) noexcept;
// t, b: the angles of the row's directions on the ring.  to_world: from the panorama to the world.
using RingNodeRow = void(const NodeRow& row, const Matrix3& to_world, std::int32_t* t, std::int32_t* b) noexcept;

extern const Variants<LensNodeRow> kLensNodeRow;
extern const Variants<RingNodeRow> kRingNodeRow;

}  // namespace biseam::ring
