// The mesh of a panorama in which near things are brought together: either lens's view is moved across the ring.
#pragma once

#include "base/variants.hpp"
#include "ring/mesh.hpp"
#include "ring/near/displacement.hpp"
#include "ring/ring_shape.hpp"

namespace biseam::ring {

// A mesh that shares another one's angles and has positions of its own, on a block of so many bytes, aligned to 64.
size_t moved_mesh_bytes(const MeshShape& shape) noexcept;
Mesh carve_moved_mesh(const Mesh& mesh, void* block) noexcept;

// Beyond the ring views are moved less and less, from 1/16 of a turn beyond it on not at all: 22.5 degrees.
inline constexpr int32_t kNearFade = 1 << (kTurnBits - 4);

// A row of nodes as the mesh has them, but for directions that are moved along b by the displacement, up in lens 0 and down
// in lens 1.  lenses: both.
void move_nodes(const RingShape& ring, const Displacement& displacement, const Projector* lenses, const Mesh& mesh, int row,
                const Mesh& moved) noexcept;

// Positions of a lens for count directions t, b of the mesh that are moved along b; where they aren't, what x and y hold is
// kept.
using MoveNodeRow = void(const Projector& lens, const int32_t* t, const int32_t* b, const int32_t* moves, int32_t* x,
                         int32_t* y, int count) noexcept;
extern constinit const Variants<MoveNodeRow> kMoveNodeRow;

}  // namespace biseam::ring
