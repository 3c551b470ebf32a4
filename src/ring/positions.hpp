// The positions of all samples of a block of the panorama, interpolated between the nodes of a mesh.
#pragma once

#include <cstdint>

#include "ring/mesh.hpp"

namespace biseam::ring {

// Where the samples of a plane stand among a picture's luma samples, in each direction.
struct PlaneGrid {
  int bits_x = 0, bits_y = 0;  // every 2^bits-th luma sample has one: 0 or 1
  int half_x = 0, half_y = 0;  // the first stands so many half luma samples right of and below the first luma sample: 0 or 1

  bool operator==(const PlaneGrid&) const = default;
};

inline constexpr int kBlockWidth = 64, kBlockHeight = 32;

// Luma pixels of the panorama; even, width <= kBlockWidth, height <= kBlockHeight, inside the panorama.
struct Block {
  int x, y, width, height;
};

// Row by row; a row has kBlockWidth places, of which the block's samples fill the first ones.
struct BlockValues {
  alignas(64) std::int32_t values[kBlockHeight * kBlockWidth];
};

// Positions in a plane of a lens's recorded picture, 1/65536 of that plane's samples, an integer being the middle of a sample.
// panorama, picture: the plane's grid in the panorama and in the recorded picture.  x, y: rows as of BlockValues.
void lens_positions(const Mesh& mesh, int lens, const Block& block, const PlaneGrid& panorama, const PlaneGrid& picture,
                    std::int32_t* x, std::int32_t* y) noexcept;

// A coarser grid over a plane's samples: every 2^spacing_bits-th one from the block's first, in so many columns and rows, which
// may go on for 8 samples past the block.
struct CoarseGrid {
  int spacing_bits, columns, rows;
};

// Positions in the luma of a lens's recorded picture.
void luma_positions(const Mesh& mesh, int lens, const Block& block, const PlaneGrid& panorama, const CoarseGrid& coarse,
                    BlockValues& x, BlockValues& y) noexcept;

// Angles on the ring, see mesh.hpp; t modulo a full turn, from -2^25 to 2^25.  Good within 45 degrees of the plane between the
// lenses; near their axes t means nothing.
void ring_positions(const Mesh& mesh, const Block& block, const PlaneGrid& panorama, const CoarseGrid& coarse, BlockValues& t,
                    BlockValues& b) noexcept;

}  // namespace biseam::ring
