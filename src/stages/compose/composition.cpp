#include "stages/compose/composition.hpp"

#include <cstddef>
#include <cstring>

namespace biseam {

void copy_rectangle(const uint8_t* src, int columns, int rows, int src_stride, uint32_t src_x, uint8_t* dst, int dst_stride,
                    int unit, int dst_x) {
  if (columns < 1 || unit < 1) return;
  const int64_t bytes = int64_t{columns} * unit;
  for (int row = 0; row < rows; ++row) {
    const uint8_t* from = src + ptrdiff_t{row} * src_stride + ptrdiff_t{unit} * ptrdiff_t(src_x);
    uint8_t* to = dst + ptrdiff_t{row} * dst_stride + ptrdiff_t{unit} * dst_x;
    std::memcpy(to, from, static_cast<size_t>(bytes));
  }
}

void place_strips(const PlanePlacement& p) {
  const int columns[2] = {p.offsets[0], p.offsets[0] + p.gap + p.offsets[1]};
  for (int i = 0; i < 2; ++i) {
    copy_rectangle(p.sources[i], p.widths[i], p.rows, p.src_strides[i], 0, p.dst, p.dst_stride, p.unit, columns[i]);
  }
}

void compose_panorama(const Composition& c) {
  const ImageHeader &strip0 = *c.strips[0], &strip1 = *c.strips[1], &panorama = *c.panorama;
  for (int k = 0; k < 2; ++k) {
    // Chroma has half the columns, in units of two bytes.  Only code 0 halves its rows; code 1 is laid out alike but copies
    // all.
    const int step = k + 1, rows = k == 1 && c.format == BISEAM_YUV420_SEMIPLANAR ? strip0.height / 2 : strip0.height;
    place_strips({.sources = {strip0.planes[k], strip1.planes[k]},
                  .widths = {strip0.width / step, strip1.width / step},
                  .src_strides = {strip0.strides[k], strip1.strides[k]},
                  .offsets = {c.offsets[0] / step, c.offsets[1] / step},
                  .rows = rows,
                  .dst = panorama.planes[k],
                  .dst_stride = panorama.strides[k],
                  .unit = step,
                  .gap = c.gap / step});
  }
}

}  // namespace biseam
