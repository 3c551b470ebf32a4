// Matched light in a block of the panorama.
#pragma once

#include <cstdint>

#include "ring/light/match_field.hpp"
#include "ring/light/match_rows.hpp"
#include "ring/positions.hpp"

namespace biseam::ring {

struct MatchedLight {
  const MatchNodes* nodes;  // null: light isn't matched
  Tone tone;
};

// One thread's, for one lens's samples of one plane in a block.
struct MatchBlock {
  int channels, values[4];  // which of MatchValue the channels take: factors, then shares
  bool flat;                // the same everywhere in the block
  alignas(64) int16_t rows[4][kBlockWidth];
};

// channel: the plane's first one as frames know them; second: of a pair, else 0.
void prepare_match(const MatchedLight& light, const Mesh& mesh, const Block& block, const PlaneGrid& grid, int lens,
                   const int (&channels)[2], bool pairs, MatchBlock& made) noexcept;

// Rows of fine samples from first_row on, in place.  luma: for chroma only, as it is shown at the same places, fine, in rows
// kBlockWidth apart.  count: samples of each channel in a row.
void match_block_rows(const MatchedLight& light, const Mesh& mesh, const Block& block, const PlaneGrid& grid, int lens,
                      int first_row, const int16_t* luma, int16_t* samples, SharedRows rows, int count,
                      MatchBlock& made) noexcept;

}  // namespace biseam::ring
