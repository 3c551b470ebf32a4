#include "ring/light/match_paint.hpp"

#include <algorithm>

namespace biseam::ring {

namespace {

// Where a run of samples begins among nodes.
struct Start {
  int node, past;  // half pixels
};
Start start_of(int first, int half, int bits) noexcept {
  const int place = 2 * first + half;
  return {place >> bits, place & ((1 << bits) - 1)};
}

// Node (0, 0) has the index (1, 1).
ptrdiff_t index_of(const MeshShape& shape, int column, int row) noexcept {
  return ptrdiff_t{row + 1} * shape.columns + column + 1;
}

bool is_flat(const MeshShape& shape, const Block& block, const int16_t* values) noexcept {
  const int bits = shape.spacing_bits, first_column = 2 * block.x >> bits, first_row = 2 * block.y >> bits;
  const int end_column = std::min((2 * (block.x + block.width) >> bits) + 2, shape.columns - 1);
  const int end_row = std::min((2 * (block.y + block.height) >> bits) + 2, shape.rows - 1);
  const int16_t* row = values + index_of(shape, first_column, first_row);
  const int16_t first = *row;
  int differences = 0;
  for (int j = first_row; j < end_row; ++j, row += shape.columns) {
    for (int i = 0; i < end_column - first_column; ++i) differences |= row[i] ^ first;
    if (differences != 0) return false;
  }
  return true;
}

int values_in_use(const MatchBlock& made) noexcept { return made.values[2] < 0 ? 1 : 4; }

}  // namespace

void prepare_match(const MatchedLight& light, const Mesh& mesh, const Block& block, const PlaneGrid& grid, int lens,
                   const int (&channels)[2], bool pairs, MatchBlock& made) noexcept {
  const bool chroma = channels[0] != 0 && !light.tone.rgb;
  made.channels = pairs ? 2 : 1;
  for (int c = 0; c < 2; ++c) {
    const int channel = pairs ? channels[c] : channels[0];
    made.values[c] = first_factor + channel;
    made.values[2 + c] = chroma ? first_tint + channel - 1 : -1;
  }
  made.flat = true;
  for (int v = 0; v < values_in_use(made); ++v) {
    made.flat = made.flat && is_flat(mesh.shape, block, light.nodes->values[lens][made.values[v]]);
  }
  if (!made.flat) return;
  const ptrdiff_t first = index_of(mesh.shape, 2 * block.x >> mesh.shape.spacing_bits, 2 * block.y >> mesh.shape.spacing_bits);
  for (int v = 0; v < values_in_use(made); ++v) {
    std::fill_n(made.rows[v], block.width >> grid.bits_x, light.nodes->values[lens][made.values[v]][first]);
  }
}

void match_block_rows(const MatchedLight& light, const Mesh& mesh, const Block& block, const PlaneGrid& grid, int lens,
                      int first_row, const int16_t* luma, int16_t* samples, SharedRows rows, int count,
                      MatchBlock& made) noexcept {
  if (!made.flat) {
    const int bits = mesh.shape.spacing_bits;
    const Start across = start_of(block.x, grid.half_x, bits),
                down = start_of(block.y + ((first_row + kSharedRows / 2) << grid.bits_y), grid.half_y, bits);
    const ptrdiff_t first = index_of(mesh.shape, across.node, down.node);
    for (int v = 0; v < values_in_use(made); ++v) {
      if (v % 2 == 1 && made.channels == 1) continue;
      const int16_t* const upper = light.nodes->values[lens][made.values[v]] + first;
      kSpreadNodes.best()({upper, upper + mesh.shape.columns, down.past, bits, across.past, 1 + grid.bits_x}, made.rows[v],
                          count);
    }
  }
  if (made.values[2] < 0) return kMatchRows.best()(samples, rows, made.rows[0], light.tone, count);
  const MatchChroma chroma{
      {made.rows[0], made.rows[1]}, {made.rows[2], made.rows[3]}, luma, kBlockWidth, light.tone.black, light.tone.white};
  kMatchChromaRows.best()(samples, rows, chroma, made.channels, count);
}

}  // namespace biseam::ring
