// The panorama in blocks: which lens each takes its samples from, and how much that lens is shrunk there.
#pragma once

#include <cstdint>

#include "ring/mesh.hpp"
#include "ring/positions.hpp"
#include "ring/sample/axis_weights.hpp"

namespace biseam::ring {

enum class BlockKind : uint8_t { lens0, lens1, ring };  // ring: both lenses may be needed

// Indices of kWidenings for the axes of a lens's picture.
struct Widenings {
  uint8_t across, down;
};

// Luma samples of a picture, both ends included; they need not lie inside it.
struct PictureBox {
  int16_t left, top, right, bottom;
};

struct BlockPlan {
  Block block;
  BlockKind kind;
  // By lens; of those that are needed.
  Widenings luma[2], chroma[2];
  PictureBox box[2];  // of the lens's picture: holds the block's samples but for a pixel or two
};

constexpr int block_columns(int width) noexcept { return (width + kBlockWidth - 1) / kBlockWidth; }
constexpr int block_rows(int height) noexcept { return (height + kBlockHeight - 1) / kBlockHeight; }
constexpr int block_count(int width, int height) noexcept { return block_columns(width) * block_rows(height); }

// Plans every block of a mesh, those that need one lens first: the number of those.  half_width: of the ring, in angles of the
// mesh.  chroma: the grid of the chroma planes, both of the panorama and of the pictures.
int plan_blocks(const Mesh& mesh, int32_t half_width, const PlaneGrid& chroma, BlockPlan* plans) noexcept;

}  // namespace biseam::ring
