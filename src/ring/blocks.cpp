#include "ring/blocks.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "ring/anchors.hpp"

namespace biseam::ring {

namespace {

// Nodes that surround a block, as indices into a plane of nodes; the ends belong to them.
struct NodeRange {
  int first_column, last_column, first_row, last_row;
};

// Nodes next to half pixels from a block's first up to its last one, and past more behind it.
NodeRange nodes_around(const MeshShape& shape, const Block& block, int past = 0) noexcept {
  const int bits = shape.spacing_bits;
  const auto first = [&](int at) { return (2 * at >> bits) + kNodesBefore; };
  const auto last = [&](int end) { return ((2 * end - 1 + past) >> bits) + 1 + kNodesBefore; };
  return {first(block.x), last(block.x + block.width), first(block.y), last(block.y + block.height)};
}

struct Extremes {
  int32_t least, largest;
};

Extremes extremes_of(const Mesh& mesh, NodePlane plane, const NodeRange& range) noexcept {
  Extremes found{INT32_MAX, INT32_MIN};
  for (int j = range.first_row; j <= range.last_row; ++j) {
    const int32_t* const row = plane.values + ptrdiff_t{j} * mesh.shape.columns;
    for (int i = range.first_column; i <= range.last_column; ++i) {
      found.least = std::min(found.least, row[i]);
      found.largest = std::max(found.largest, row[i]);
    }
  }
  return found;
}

// What is asked of a lens: nodes with angles b of at least so much, times the lens's side of the ring.  Beyond, positions turn
// ever faster round the point opposite to it, and no sample is taken.
struct Used {
  int32_t side, least;

  bool node(int32_t b) const noexcept { return side * b >= least; }
};

// Largest number of source samples that one sample of the panorama moves on by, along one axis of the picture: at nodes, as
// half of what lies between those on either side.  step_x, step_y: luma samples of the panorama from sample to sample; unit:
// luma samples of the picture from sample to sample along the axis.
double largest_step(const Mesh& mesh, NodePlane plane, const NodeRange& range, const Used& used, int step_x, int step_y,
                    int unit) noexcept {
  double largest = 0;
  for (int j = range.first_row; j <= range.last_row; ++j) {
    const int32_t* const row = plane.values + ptrdiff_t{j} * mesh.shape.columns;
    const int32_t *const above = row - mesh.shape.columns, *const below = row + mesh.shape.columns;
    const int32_t* const b = mesh.b.values + ptrdiff_t{j} * mesh.shape.columns;
    for (int i = range.first_column; i <= range.last_column; ++i) {
      if (!used.node(b[i])) continue;
      const double x = static_cast<double>(int64_t{row[i + 1]} - row[i - 1]) * step_x;
      const double y = static_cast<double>(int64_t{below[i]} - above[i]) * step_y;
      largest = std::max(largest, x * x + y * y);
    }
  }
  const double apart = std::ldexp(1, mesh.shape.spacing_bits);  // luma pixels
  return std::sqrt(largest) / (apart * unit * (1 << kPositionBits));
}

Widenings widenings_of(const Mesh& mesh, const LensNodes& nodes, const NodeRange& range, const Used& used,
                       const PlaneGrid& grid) noexcept {
  const int step_x = 1 << grid.bits_x, step_y = 1 << grid.bits_y;
  return {static_cast<uint8_t>(widening_for(largest_step(mesh, nodes.x, range, used, step_x, step_y, step_x))),
          static_cast<uint8_t>(widening_for(largest_step(mesh, nodes.y, range, used, step_x, step_y, step_y)))};
}

// The least box of nodes between which the block's samples stand.
PictureBox box_of(const Mesh& mesh, const LensNodes& nodes, const NodeRange& range) noexcept {
  const Extremes x = extremes_of(mesh, nodes.x, range), y = extremes_of(mesh, nodes.y, range);
  const auto sample = [](int32_t position) { return static_cast<int16_t>(position >> kPositionBits); };
  return {sample(x.least), sample(y.least), sample(x.largest), sample(y.largest)};
}

// No angle changes by more than so many pixels' way, where pixels are largest.
int32_t angle_of(const MeshShape& shape, double pixels) noexcept {
  const int round = std::min(shape.width, 2 * shape.height);  // pixels round the sphere
  return static_cast<int32_t>(std::ldexp(pixels, kTurnBits) / round) + 1;
}

// Of a block where the angles b are no farther beyond these extremes than a reach.
BlockKind kind_within(const Extremes& b, int32_t reach, int32_t half_width) noexcept {
  return b.least - reach > half_width ? BlockKind::lens1 : b.largest + reach < -half_width ? BlockKind::lens0 : BlockKind::ring;
}

// Whether a node in a block tells that it is the ring's, as most of the ring's do.
bool shows_ring(const Mesh& mesh, const Block& block, int32_t most) noexcept {
  const int bits = mesh.shape.spacing_bits, before = (1 << bits) - 1;
  const int first_column = (2 * block.x + before) >> bits, last_column = 2 * (block.x + block.width) >> bits;
  const int first_row = (2 * block.y + before) >> bits, last_row = 2 * (block.y + block.height) >> bits;
  for (int j = first_row; j <= last_row; ++j) {
    for (int i = first_column; i <= last_column; ++i) {
      const int32_t b = mesh.b.values[node_index(mesh.shape, i, j)];
      if (b >= -most && b <= most) return true;
    }
  }
  return false;
}

// By every fourth pixel: none is farther from one than by two in each direction.
BlockKind kind_by_anchors(const Mesh& mesh, const Block& block, int32_t half_width) noexcept {
  const int32_t reach = angle_of(mesh.shape, 3);
  if (shows_ring(mesh, block, half_width + reach)) return BlockKind::ring;
  const AnchorCount count = anchors_around(block.width, block.height);
  BlockValues t, b;
  ring_positions(mesh, block, {}, {kAnchorBits, count.columns, count.rows}, t, b);
  Extremes found{INT32_MAX, INT32_MIN};
  for (int j = 0; j < count.rows; ++j) {
    int32_t least, largest;
    kFindRange.best()(b.values + j * kBlockWidth, count.columns, &least, &largest);
    found = {std::min(found.least, least), std::max(found.largest, largest)};
  }
  return kind_within(found, reach, half_width);
}

BlockPlan plan_block(const Mesh& mesh, const Block& block, int32_t half_width, const PlaneGrid& chroma) noexcept {
  const NodeRange range = nodes_around(mesh.shape, block);
  const int32_t reach = angle_of(mesh.shape, std::ldexp(0.5, mesh.shape.spacing_bits));  // from a node to what is nearest to it
  BlockPlan plan{.block = block, .kind = BlockKind::ring, .luma = {}, .chroma = {}, .box = {}};
  // Samples of coarser grids stand up to half a luma pixel past the block's last ones.
  plan.kind = kind_within(extremes_of(mesh, mesh.b, nodes_around(mesh.shape, block, 1)), reach, half_width);
  if (plan.kind == BlockKind::ring) plan.kind = kind_by_anchors(mesh, block, half_width);
  for (int lens = 0; lens < 2; ++lens) {
    if (plan.kind == (lens == 0 ? BlockKind::lens1 : BlockKind::lens0)) continue;  // nothing of it is asked for
    const Used used{lens == 1 ? 1 : -1, -half_width - reach};
    plan.luma[lens] = widenings_of(mesh, mesh.lens[lens], range, used, {});
    plan.chroma[lens] = widenings_of(mesh, mesh.lens[lens], range, used, chroma);
    plan.box[lens] = box_of(mesh, mesh.lens[lens], range);
  }
  return plan;
}

}  // namespace

int plan_blocks(const Mesh& mesh, int32_t half_width, const PlaneGrid& chroma, BlockPlan* plans) noexcept {
  const int width = mesh.shape.width, height = mesh.shape.height;
  int front = 0, back = block_count(width, height);
  for (int y = 0; y < height; y += kBlockHeight) {
    for (int x = 0; x < width; x += kBlockWidth) {
      const Block block{x, y, std::min(kBlockWidth, width - x), std::min(kBlockHeight, height - y)};
      const BlockPlan plan = plan_block(mesh, block, half_width, chroma);
      plans[plan.kind == BlockKind::ring ? --back : front++] = plan;
    }
  }
  return front;
}

}  // namespace biseam::ring
