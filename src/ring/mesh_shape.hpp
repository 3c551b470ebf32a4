// How many nodes a mesh has, and where.
#pragma once

#include <cstddef>

#include "camera/camera.hpp"

namespace biseam::ring {

// Node (i, j) stands at the panorama's luma position (i * spacing, j * spacing), spacing being 2^spacing_bits half pixels.
// Indices go from -kNodesBefore to columns - kNodesBefore - 1 and rows - kNodesBefore - 1: three nodes lie left of and right of
// every position in the panorama, above and below it, as a cubic with slopes from six of them needs.
struct MeshShape {
  int width = 0, height = 0;  // of the panorama, even
  int spacing_bits = 0;       // 0 (every half pixel) .. 6 (every 32 pixels)
  int columns = 0, rows = 0;
};

inline constexpr int kLargestSpacingBits = 6;
inline constexpr int kCubicNodes = 6;
inline constexpr int kNodesAround = kCubicNodes - 1;  // beside the one left of or above a position
inline constexpr int kNodesBefore = 2;                // of these; for the panorama's first position too

// Degrees beyond the plane between the lenses up to which a lens may be used: no ring is wider to either side.
inline constexpr double kLargestHalfWidth = 15;

// Degrees between nodes at most: the farthest ones that a cubic goes by, 4.3 times as far away, are within kBeyondFov.  Where
// nodes are moved for near things, they stand close enough to follow what varies within some degrees.
inline constexpr double kWidestSpacing = 6.5, kMovedSpacing = 5;

// The widest spacing, widest at most, that keeps positions within 0.005 pixels of the exact ones wherever a lens is used.
MeshShape mesh_shape(const Camera& camera, int width, int height, double widest = kWidestSpacing) noexcept;

// Where node (column, row) is among a plane's.
inline std::ptrdiff_t node_index(const MeshShape& shape, int column, int row) noexcept {
  return std::ptrdiff_t{row + kNodesBefore} * shape.columns + column + kNodesBefore;
}

inline std::size_t node_count(const MeshShape& shape) noexcept {
  return static_cast<std::size_t>(shape.columns) * static_cast<std::size_t>(shape.rows);
}

}  // namespace biseam::ring
