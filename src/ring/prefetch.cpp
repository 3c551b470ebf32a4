#include "ring/prefetch.hpp"

#include <algorithm>

#include "base/prefetch.hpp"
#include "ring/plane_block.hpp"

namespace biseam::ring {

namespace {

// What would push everything else out of the first cache is left to the samplers.  Pictures that are shrunk need so much.
constexpr ptrdiff_t kMostBytes = 1 << 15;

// Where samples of a box lie along an axis.
struct Span {
  int first, last;
};

Span span_of(int first, int last, int bits, int samples) noexcept {
  return {std::clamp((first >> bits) - 1, 0, samples - 1), std::clamp((last >> bits) + 1, 0, samples - 1)};
}

}  // namespace

PlaneBytes bytes_in_box(const SampleSource& plane, const PlaneGrid& grid, const PictureBox& box) noexcept {
  const Span across = span_of(box.left, box.right, grid.bits_x, plane.width);
  const Span down = span_of(box.top, box.bottom, grid.bits_y, plane.height);
  const int unit = bytes_of(plane.type);
  return {plane.first + down.first * plane.stride + ptrdiff_t{across.first} * unit, plane.stride, down.last - down.first + 1,
          ptrdiff_t{across.last - across.first + 1} * unit};
}

void prefetch_block(const Painting& painting, const BlockPlan& plan) noexcept {
  for (int index = 0; index < painting.panorama.planes; ++index) {
    const PlaneBlock samples(painting, plan.block, index);
    prefetch_rows<true>(samples.row_of(painting, 0), painting.planes[index].stride, samples.rows,
                        ptrdiff_t{samples.columns} * bytes_of(samples.format->type));
    for (int lens = 0; lens < 2; ++lens) {
      if (plan.kind == (lens == 0 ? BlockKind::lens1 : BlockKind::lens0)) continue;
      const PlaneBytes plane = bytes_in_box(painting.sources[lens][index], painting.picture.plane[index].grid, plan.box[lens]);
      if (plane.rows * plane.bytes > kMostBytes) continue;
      prefetch_rows<false>(plane.first, plane.stride, plane.rows, plane.bytes);
    }
  }
}

}  // namespace biseam::ring
