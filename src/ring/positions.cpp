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

// Positions go 256 pixels at most from one node to the next, and 64 more or less from there; angles an eighth of a turn, and a
// thirty-second.
constexpr int kPositionSlopeBits = 2, kAngleSlopeBits = 5;

void set_values(const std::int32_t* first, int offset, int halvings, int wrapped_bits, int slope_bits,
                NodeValues& values) noexcept {
  values.first = first;
  values.offset = offset;
  values.halvings = halvings;
  values.wrapped_bits = wrapped_bits;
  values.slope_bits = slope_bits;
}

NodeWindow window_of(const MeshShape& shape, const Block& block, const PlaneGrid& grid) noexcept {
  NodeWindow window;
  window.stride = shape.columns;
  window.bits = shape.spacing_bits;
  set_run(block.x, block.width, grid.bits_x, grid.half_x, shape.spacing_bits, window.across);
  set_run(block.y, block.height, grid.bits_y, grid.half_y, shape.spacing_bits, window.down);
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

// The first of those that a block's cubics go by.
std::ptrdiff_t first_node(const MeshShape& shape, const Block& block, const PlaneGrid& grid) noexcept {
  return node_index(shape, ((2 * block.x + grid.half_x) >> shape.spacing_bits) - kNodesBefore,
                    ((2 * block.y + grid.half_y) >> shape.spacing_bits) - kNodesBefore);
}

void interpolate(const NodeWindow& window, std::int32_t* first, std::int32_t* second) noexcept {
  std::int32_t* const out[2] = {first, second};
  kInterpolateNodes.best()(window, out);
}

}  // namespace

void lens_positions(const Mesh& mesh, int lens, const Block& block, const PlaneGrid& panorama, const PlaneGrid& picture,
                    std::int32_t* x, std::int32_t* y) noexcept {
  constexpr int kHalfPixel = 1 << (kPositionBits - 1);
  const std::ptrdiff_t first = first_node(mesh.shape, block, panorama);
  NodeWindow window = window_of(mesh.shape, block, panorama);
  set_values(mesh.lens[lens].x.values + first, picture.half_x * kHalfPixel, picture.bits_x, 0, kPositionSlopeBits,
             window.values[0]);
  set_values(mesh.lens[lens].y.values + first, picture.half_y * kHalfPixel, picture.bits_y, 0, kPositionSlopeBits,
             window.values[1]);
  interpolate(window, x, y);
}

void luma_positions(const Mesh& mesh, int lens, const Block& block, const PlaneGrid& panorama, const CoarseGrid& coarse,
                    BlockValues& x, BlockValues& y) noexcept {
  const std::ptrdiff_t first = first_node(mesh.shape, block, panorama);
  NodeWindow window = coarse_window(mesh.shape, block, panorama, coarse);
  set_values(mesh.lens[lens].x.values + first, 0, 0, 0, kPositionSlopeBits, window.values[0]);
  set_values(mesh.lens[lens].y.values + first, 0, 0, 0, kPositionSlopeBits, window.values[1]);
  interpolate(window, x.values, y.values);
}

void ring_positions(const Mesh& mesh, const Block& block, const PlaneGrid& panorama, const CoarseGrid& coarse, BlockValues& t,
                    BlockValues& b) noexcept {
  const std::ptrdiff_t first = first_node(mesh.shape, block, panorama);
  NodeWindow window = coarse_window(mesh.shape, block, panorama, coarse);
  set_values(mesh.t.values + first, 0, 0, 32 - kTurnBits, kAngleSlopeBits, window.values[0]);
  set_values(mesh.b.values + first, 0, 0, 0, kAngleSlopeBits, window.values[1]);
  interpolate(window, t.values, b.values);
}

}  // namespace biseam::ring
