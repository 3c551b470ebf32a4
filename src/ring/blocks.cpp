#include "ring/blocks.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace biseam::ring {

namespace {

// Nodes that surround a block, as indices into a plane of nodes; the ends belong to them.
struct NodeRange {
  int first_column, last_column, first_row, last_row;
};

// Samples of coarser grids stand up to half a luma pixel past the block's first or last ones.
NodeRange nodes_around(const MeshShape& shape, const Block& block) noexcept {
  const int bits = shape.spacing_bits;
  // Node (0, 0) has the index (1, 1).
  return {(2 * block.x >> bits) + 1, std::min((2 * (block.x + block.width) >> bits) + 2, shape.columns - 1),
          (2 * block.y >> bits) + 1, std::min((2 * (block.y + block.height) >> bits) + 2, shape.rows - 1)};
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

// Largest number of source samples that one sample of the panorama moves on by, along one axis of the picture.  step_x, step_y:
// luma samples of the panorama from sample to sample; unit: luma samples of the picture from sample to sample along the axis.
double largest_step(const Mesh& mesh, NodePlane plane, const NodeRange& range, const Used& used, int step_x, int step_y,
                    int unit) noexcept {
  double largest = 0;
  for (int j = range.first_row; j < range.last_row; ++j) {
    const int32_t* const row = plane.values + ptrdiff_t{j} * mesh.shape.columns;
    const int32_t* const below = row + mesh.shape.columns;
    const int32_t* const b = mesh.b.values + ptrdiff_t{j} * mesh.shape.columns;
    for (int i = range.first_column; i < range.last_column; ++i) {
      if (!used.node(b[i]) && !used.node(b[i + 1]) && !used.node(b[i + mesh.shape.columns])) continue;
      const double x = static_cast<double>(int64_t{row[i + 1]} - row[i]) * step_x;
      const double y = static_cast<double>(int64_t{below[i]} - row[i]) * step_y;
      largest = std::max(largest, x * x + y * y);
    }
  }
  const double node_spacing = std::ldexp(0.5, mesh.shape.spacing_bits);  // luma pixels
  return std::sqrt(largest) / (node_spacing * unit * (1 << kPositionBits));
}

Widenings widenings_of(const Mesh& mesh, const LensNodes& nodes, const NodeRange& range, const Used& used,
                       const PlaneGrid& grid) noexcept {
  const int step_x = 1 << grid.bits_x, step_y = 1 << grid.bits_y;
  return {static_cast<uint8_t>(widening_for(largest_step(mesh, nodes.x, range, used, step_x, step_y, step_x))),
          static_cast<uint8_t>(widening_for(largest_step(mesh, nodes.y, range, used, step_x, step_y, step_y)))};
}

// The least box of nodes between which the block's samples stand.
PictureBox box_of(const Mesh& mesh, const LensNodes& nodes, const Block& block) noexcept {
  const int bits = mesh.shape.spacing_bits;
  const NodeRange range{(2 * block.x >> bits) + 1, ((2 * (block.x + block.width) - 1) >> bits) + 2, (2 * block.y >> bits) + 1,
                        ((2 * (block.y + block.height) - 1) >> bits) + 2};
  const Extremes x = extremes_of(mesh, nodes.x, range), y = extremes_of(mesh, nodes.y, range);
  const auto sample = [](int32_t position) { return static_cast<int16_t>(position >> kPositionBits); };
  return {sample(x.least), sample(y.least), sample(x.largest), sample(y.largest)};
}

BlockPlan plan_block(const Mesh& mesh, const Block& block, int32_t half_width, const PlaneGrid& chroma) noexcept {
  const NodeRange range = nodes_around(mesh.shape, block);
  // From a node to the farthest place that is nearest to it no angle changes by more than the way there.
  const int round = std::min(mesh.shape.width, 2 * mesh.shape.height);  // pixels round the sphere, where they are largest
  const int32_t reach = static_cast<int32_t>(std::ldexp(1.0, kTurnBits + mesh.shape.spacing_bits - 1) / round) + 1;
  const Extremes b = extremes_of(mesh, mesh.b, range);
  BlockPlan plan{.block = block, .kind = BlockKind::ring, .luma = {}, .chroma = {}, .box = {}};
  if (b.least - reach > half_width) plan.kind = BlockKind::lens1;
  if (b.largest + reach < -half_width) plan.kind = BlockKind::lens0;
  for (int lens = 0; lens < 2; ++lens) {
    const Used used{lens == 1 ? 1 : -1, -half_width - reach};
    plan.luma[lens] = widenings_of(mesh, mesh.lens[lens], range, used, {});
    plan.chroma[lens] = widenings_of(mesh, mesh.lens[lens], range, used, chroma);
    plan.box[lens] = box_of(mesh, mesh.lens[lens], block);
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
