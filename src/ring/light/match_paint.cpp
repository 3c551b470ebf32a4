#include "ring/light/match_paint.hpp"

#include <algorithm>
#include <cstring>

#include "ring/light/match_chroma_rows.hpp"
#include "ring/light/spread_places.hpp"

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

bool is_same(const MatchPlace& a, const MatchPlace& b) noexcept { return std::memcmp(&a, &b, sizeof a) == 0; }

// Whether all nodes that a block's samples lie between say the same.
bool is_flat(const MeshShape& shape, const Block& block, const MatchPlace* nodes) noexcept {
  const int bits = shape.spacing_bits, first_column = 2 * block.x >> bits, first_row = 2 * block.y >> bits;
  const int end_column = (2 * (block.x + block.width) >> bits) + 2, end_row = (2 * (block.y + block.height) >> bits) + 2;
  const MatchPlace* row = nodes + node_index(shape, first_column, first_row);
  const MatchPlace& first = *row;
  for (int j = first_row; j < end_row; ++j, row += shape.columns) {
    for (int i = 0; i < end_column - first_column; ++i) {
      if (!is_same(row[i], first)) return false;
    }
  }
  return true;
}

void note_signs(int16_t gain, MatchBlock& made) noexcept {
  made.up = made.up || gain > 0;
  made.down = made.down || gain < 0;
}

void fill_flat(const MatchPlace& place, int count, MatchBlock& made) noexcept {
  const int16_t* const values = place.values;
  for (int c = 0; c < made.channels; ++c) {
    note_signs(values[made.gains[c]], made);
    for (int i = 0; i < count; ++i) made.gain_rows[0][i * made.channels + c] = values[made.gains[c]];
    for (int i = 0; i < count && made.shares[c] >= 0; ++i) {
      made.share_rows[0][i * made.channels + c] = values[made.shares[c]];
    }
  }
}

// The values of a row of nodes in a block's columns.
struct NodeColumns {
  Start start;
  int bits, step_bits, count;  // steps: half pixels

  void spread(const MatchPlace* nodes, const int (&values)[2], int channels, int16_t* out) const noexcept {
    const int16_t* const first = nodes[start.node].values;
    kSpreadPlaces.best()({first + values[0], channels == 2 ? first + values[1] : nullptr, bits, start.past, step_bits}, out,
                         count);
  }

  void spread(const MatchPlace* nodes, int to, MatchBlock& made) const noexcept {
    spread(nodes, made.gains, made.channels, made.gain_rows[to]);
    if (made.shares[0] >= 0) spread(nodes, made.shares, made.channels, made.share_rows[to]);
    const int last = (start.past + ((count - 1) << step_bits)) >> bits;
    for (int i = start.node; i <= start.node + last + 1; ++i) {
      for (int c = 0; c < made.channels; ++c) note_signs(nodes[i].values[made.gains[c]], made);
    }
  }
};

}  // namespace

void prepare_match(const MatchedLight& light, const Mesh& mesh, const Block& block, const PlaneGrid& grid, int lens,
                   const int (&channels)[2], bool pairs, MatchBlock& made) noexcept {
  const bool chroma = channels[0] != 0 && !light.tone.rgb;
  made.channels = pairs ? 2 : 1;
  for (int c = 0; c < 2; ++c) {
    const int channel = pairs ? channels[c] : channels[0];
    made.gains[c] = first_gain + channel;
    made.shares[c] = chroma ? first_tint + channel - 1 : -1;
  }
  made.node_row = -1;
  made.upper = 0;
  if (channels[0] == 0) made.flat = is_flat(mesh.shape, block, light.nodes->places[lens]);
  if (!made.flat) return;
  made.up = made.down = false;
  const int bits = mesh.shape.spacing_bits;
  fill_flat(light.nodes->places[lens][node_index(mesh.shape, 2 * block.x >> bits, 2 * block.y >> bits)],
            block.width >> grid.bits_x, made);
}

namespace {

// Rows from first_row on that lie between the same rows of nodes, of those that are left.
struct RowsBetweenNodes {
  int count, below, step;  // see ValueRows
};

RowsBetweenNodes find_nodes(const MatchedLight& light, const Mesh& mesh, const Block& block, const PlaneGrid& grid, int lens,
                            int first_row, int left, int columns, MatchBlock& made) noexcept {
  if (made.flat) return {left, 0, 0};
  const int bits = mesh.shape.spacing_bits, step = 2 * kSharedRows << grid.bits_y;
  const Start down = start_of(block.y + ((first_row + kSharedRows / 2) << grid.bits_y), grid.half_y, bits);
  if (down.node != made.node_row) {
    const NodeColumns nodes{start_of(block.x, grid.half_x, bits), bits, 1 + grid.bits_x, columns};
    const MatchPlace* const upper = light.nodes->places[lens] + node_index(mesh.shape, 0, down.node);
    // The lower ones may be there already.
    const bool next = made.node_row >= 0 && down.node == made.node_row + 1;
    if (next) {
      made.upper = 1 - made.upper;
    } else {
      made.up = made.down = false;
      nodes.spread(upper, made.upper, made);
    }
    nodes.spread(upper + mesh.shape.columns, 1 - made.upper, made);
    made.node_row = down.node;
  }
  const int groups = ((1 << bits) - down.past + step - 1) / step;
  return {std::min(left, groups * kSharedRows), down.past << (15 - bits), step << (15 - bits)};
}

}  // namespace

void match_block_rows(const MatchedLight& light, const Mesh& mesh, const Block& block, const PlaneGrid& grid, int lens,
                      int first_row, const int16_t* luma, int16_t* samples, FineRows rows, int count,
                      MatchBlock& made) noexcept {
  for (int done = 0; done < rows.count;) {
    const RowsBetweenNodes some = find_nodes(light, mesh, block, grid, lens, first_row + done, rows.count - done, count, made);
    const int upper = made.upper, lower = made.flat ? upper : 1 - upper;
    const MatchGains gains{{made.gain_rows[upper], made.gain_rows[lower], some.below, some.step}, made.up, made.down};
    const FineRows these{some.count, rows.stride};
    int16_t* const out = samples + done * rows.stride;
    if (made.shares[0] < 0) {
      kMatchRows.best()(out, these, gains, light.tone, count * made.channels);
    } else {
      const MatchChroma chroma{gains,
                               {made.share_rows[upper], made.share_rows[lower], some.below, some.step},
                               luma + ptrdiff_t{done} * 2 * kBlockWidth,
                               2 * kBlockWidth,
                               {made.shares[0] - first_tint + 1, made.shares[1] - first_tint + 1}};
      kMatchChromaRows.best()(out, these, chroma, light.tone, count * made.channels);
    }
    done += some.count;
  }
}

}  // namespace biseam::ring
