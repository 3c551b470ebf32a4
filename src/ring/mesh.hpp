// Where the panorama's pixels lie in both lenses' pictures and on the ring, at the nodes of a coarse grid.  From here on
// positions are integers.
#pragma once

#include <cstdint>

#include "camera/projector.hpp"
#include "camera/view.hpp"
#include "ring/mesh_shape.hpp"

namespace biseam::ring {

// Positions are in 1/65536 pixel of the recorded pictures' luma.  Where a lens does not see, they mean nothing but stay within
// kFarthest pixels of the origin.
inline constexpr int kPositionBits = 16;
inline constexpr int kFarthest = 24576;

// Angles on the ring are in 1/2^24 of a full turn: t round the axis, from the world's x axis towards y, modulo a full turn; b
// from the plane between the lenses, positive towards lens 1.
inline constexpr int kTurnBits = 24;

// One value at every node, row by row from node (-kNodesBefore, -kNodesBefore).
struct NodePlane {
  std::int32_t* values;
};

struct LensNodes {
  NodePlane x, y;
};

struct Mesh {
  MeshShape shape;
  LensNodes lens[2];
  NodePlane t, b;
  double* angles;  // sine and cosine of the columns' longitudes: working memory of build_mesh
};

// Bytes that carve_mesh takes from its block, which has to be aligned to 64.
std::size_t mesh_bytes(const MeshShape& shape) noexcept;
Mesh carve_mesh(const MeshShape& shape, void* block) noexcept;

// Fills every node.  turn: where the panorama's middle looks.
void build_mesh(const Mesh& mesh, const Projector& lens0, const Projector& lens1, const Turn& turn) noexcept;

}  // namespace biseam::ring
