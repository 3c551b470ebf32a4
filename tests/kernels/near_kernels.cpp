#include <algorithm>

#include "kernels/kernels.hpp"
#include "ring/mesh.hpp"
#include "ring/near/disparity_path.hpp"
#include "ring/near/disparity_rows.hpp"
#include "ring/near/near_nodes.hpp"
#include "ring/near/shift_rows.hpp"
#include "support/cameras.hpp"

namespace biseam::test {

namespace {

using namespace ring;

void call_gradient_row(KernelCall& call, GradientRow* find) {
  const int width = std::max(3, call.size());
  const std::size_t count = static_cast<std::size_t>(width);
  const int16_t* rows[3];
  for (const int16_t*& row : rows) row = call.input<int16_t>(count, 0, kMaxFine);
  int16_t* out = call.output<int16_t>(2 * count);
  call.run([&] { find(rows[0], rows[1], rows[2], out, width); });
}

// The width of a strip whose length is what its width usually goes with.
void call_compare_row(KernelCall& call, CompareRow* compare) {
  const int width = std::clamp(call.size(), 13, kMaxStripWidth),
            length = std::min((width * 17 + 15) / 16 * 16, kMaxStripLength);
  const NearShape shape = near_shape({length, width});
  const std::size_t count = 2 * static_cast<std::size_t>(shape.width), sums = static_cast<std::size_t>(shape.disparities);
  const int16_t *row0 = call.input<int16_t>(count, -1024, 1023), *row1 = call.input<int16_t>(count, -1024, 1023);
  uint32_t *apart = call.output<uint32_t>(sums), *both = call.output<uint32_t>(sums);
  call.run([&] { compare(row0, row1, shape, apart, both); });
}

void call_extend_paths(KernelCall& call, ExtendPaths* extend) {
  const int count = call.size(), disparities = call.number(3, kMostDisparities), column = call.number(0, kPathLanes - 1);
  const std::size_t places = static_cast<std::size_t>(count);
  const int32_t* costs = call.input<int32_t>(places * kPathLanes, 0, 65535);
  const int32_t* before = call.input<int32_t>(kPathLanes * kPathLanes, 0, 1 << 28);
  int32_t* after = call.output<int32_t>(kPathLanes * kPathLanes);
  int32_t* recorded = call.output<int32_t>(places * kPathLanes);
  PathSums sums;
  call.run([&] {
    std::copy_n(before, kPathLanes * kPathLanes, &sums.values[0][0]);
    std::fill_n(recorded, places * kPathLanes, 0);
    extend(reinterpret_cast<const PathCosts*>(costs), count, disparities, sums, column, reinterpret_cast<PathCosts*>(recorded));
    std::copy_n(&sums.values[0][0], kPathLanes * kPathLanes, after);
  });
}

void call_mix_neighbours(KernelCall& call, MixNeighbours* mix) {
  const std::size_t count = static_cast<std::size_t>(call.size());
  const int16_t* samples = call.input<int16_t>(count + 1, 0, kMaxFine);
  int16_t* out = call.output<int16_t>(count);
  const int fraction = call.number(0, 255);
  call.run([&] { mix(samples, fraction, out, call.size()); });
}

void call_move_node_row(KernelCall& call, MoveNodeRow* move) {
  const std::size_t count = static_cast<std::size_t>(call.size());
  const int32_t turn = 1 << kTurnBits;
  const int32_t *t = call.input<int32_t>(count, -turn / 2, turn / 2), *b = call.input<int32_t>(count, -turn / 4, turn / 4);
  const int32_t *moves = call.input<int32_t>(count, -turn / 160, turn / 160), *before = call.input<int32_t>(count, -turn, turn);
  int32_t *x = call.output<int32_t>(count), *y = call.output<int32_t>(count);
  const Projector lens(bent_pair(), call.number(0, 1));
  call.run([&] {
    std::copy_n(before, count, x);
    std::copy_n(before, count, y);
    move(lens, t, b, moves, x, y, call.size());
  });
}

}  // namespace

std::vector<Kernel> near_kernels() {
  return {make_kernel("gradients of a strip's row", kGradientRow, call_gradient_row, 56),
          make_kernel("rows at all disparities", kCompareRow, call_compare_row, 56),
          make_kernel("paths of disparities", kExtendPaths, call_extend_paths, 960),
          make_kernel("shifted strip rows", kMixNeighbours, call_mix_neighbours, 56),
          make_kernel("moved nodes", kMoveNodeRow, call_move_node_row, 125)};
}

}  // namespace biseam::test
