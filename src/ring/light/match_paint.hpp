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
  int channels, gains[2], shares[2];  // which of MatchValue the channels take; shares < 0 for none
  bool flat;                          // the same everywhere in the block
  int node_row, upper;                // of the upper values, and which of the rows they are
  bool up, down;                      // gains above or below 0
  // Of the rows of nodes above and below some samples, or the other way round; channels take turns.
  alignas(64) int16_t gain_rows[2][2 * kBlockWidth];
  alignas(64) int16_t share_rows[2][2 * kBlockWidth];
};

// channels: the plane's first one as frames know them and the second of a pair, else 0.  A block's first plane comes first:
// what it finds of the nodes holds for the others.
void prepare_match(const MatchedLight& light, const Mesh& mesh, const Block& block, const PlaneGrid& grid, int lens,
                   const int (&channels)[2], bool pairs, MatchBlock& made) noexcept;

// Rows of fine samples from first_row on, a multiple of kSharedRows, in place.  luma: for chroma only, as it is shown at the
// same places, fine, once for each channel, in rows 2 kBlockWidth apart.  count: samples of each channel in a row.
void match_block_rows(const MatchedLight& light, const Mesh& mesh, const Block& block, const PlaneGrid& grid, int lens,
                      int first_row, const int16_t* luma, int16_t* samples, FineRows rows, int count,
                      MatchBlock& made) noexcept;

}  // namespace biseam::ring
