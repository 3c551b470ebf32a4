#include "ring/positions.hpp"

#include "ring/position_loops.hpp"

namespace biseam::ring {

namespace {

// Samples of a plane's grid in a block's luma pixels first .. first + length - 1.  Fields are set one by one: copies of fresh
// pieces of other sizes would wait for all that was written before.
void set_run(int first, int length, int bits, int half, int spacing_bits, SampleRun& run) noexcept {
  run.start = (2 * first + half) & ((1 << spacing_bits) - 1);
  run.step = 2 << bits;
  run.count = length >> bits;
}

NodeWindow window_of(const MeshShape& shape, const Block& block, const PlaneGrid& grid) noexcept {
  NodeWindow window;
  window.nodes = nullptr;
  window.stride = shape.columns;
  window.bits = shape.spacing_bits;
  set_run(block.x, block.width, grid.bits_x, grid.half_x, shape.spacing_bits, window.across);
  set_run(block.y, block.height, grid.bits_y, grid.half_y, shape.spacing_bits, window.down);
  window.offset = window.halvings = window.wrapped_bits = 0;
  return window;
}

NodeWindow coarse_window(const MeshShape& shape, const Block& block, const PlaneGrid& grid, const CoarseGrid& coarse) noexcept {
  NodeWindow window = window_of(shape, block, grid);
  window.across.step <<= coarse.spacing_bits;
  window.across.count = coarse.columns;
  window.down.step <<= coarse.spacing_bits;
  window.down.count = coarse.rows;
  return window;
}

std::ptrdiff_t first_node(const MeshShape& shape, const Block& block, const PlaneGrid& grid) noexcept {
  const std::ptrdiff_t column = (2 * block.x + grid.half_x) >> shape.spacing_bits;
  const std::ptrdiff_t row = (2 * block.y + grid.half_y) >> shape.spacing_bits;
  return row * shape.columns + column;
}

}  // namespace

void lens_positions(const Mesh& mesh, int lens, const Block& block, const PlaneGrid& panorama, const PlaneGrid& picture,
                    BlockValues& x, BlockValues& y) noexcept {
  constexpr int kHalfPixel = 1 << (kPositionBits - 1);
  const std::ptrdiff_t first = first_node(mesh.shape, block, panorama);
  NodeWindow window = window_of(mesh.shape, block, panorama);
  window.nodes = mesh.lens[lens].x.values + first;
  window.offset = picture.half_x * kHalfPixel;
  window.halvings = picture.bits_x;
  kInterpolateNodes.best()(window, x.values);
  window.nodes = mesh.lens[lens].y.values + first;
  window.offset = picture.half_y * kHalfPixel;
  window.halvings = picture.bits_y;
  kInterpolateNodes.best()(window, y.values);
}

void luma_positions(const Mesh& mesh, int lens, const Block& block, const PlaneGrid& panorama, const CoarseGrid& coarse,
                    BlockValues& x, BlockValues& y) noexcept {
  const std::ptrdiff_t first = first_node(mesh.shape, block, panorama);
  NodeWindow window = coarse_window(mesh.shape, block, panorama, coarse);
  window.nodes = mesh.lens[lens].x.values + first;
  kInterpolateNodes.best()(window, x.values);
  window.nodes = mesh.lens[lens].y.values + first;
  kInterpolateNodes.best()(window, y.values);
}

void ring_positions(const Mesh& mesh, const Block& block, const PlaneGrid& panorama, const CoarseGrid& coarse, BlockValues& t,
                    BlockValues& b) noexcept {
  const std::ptrdiff_t first = first_node(mesh.shape, block, panorama);
  NodeWindow window = coarse_window(mesh.shape, block, panorama, coarse);
  window.nodes = mesh.b.values + first;
  kInterpolateNodes.best()(window, b.values);
  window.nodes = mesh.t.values + first;
  window.wrapped_bits = 32 - kTurnBits;
  kInterpolateNodes.best()(window, t.values);
}

}  // namespace biseam::ring
