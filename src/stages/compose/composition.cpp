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

void compose_panorama(const ImageHeader& strip0, const ImageHeader& strip1, const ImageHeader& pano, int left_inner,
                      int middle_inner, int gap, int format) {
  // Only code 0 halves the chroma rows; code 1 is laid out alike but copies them all.
  const int chroma_rows = format == BISEAM_YUV420_SEMIPLANAR ? strip0.height / 2 : strip0.height;
  place_strips({.sources = {strip0.planes[0], strip1.planes[0]},
                .widths = {strip0.width, strip1.width},
                .src_strides = {strip0.strides[0], strip1.strides[0]},
                .offsets = {left_inner, middle_inner},
                .rows = strip0.height,
                .dst = pano.planes[0],
                .dst_stride = pano.strides[0],
                .unit = 1,
                .gap = gap});
  place_strips({.sources = {strip0.planes[1], strip1.planes[1]},
                .widths = {strip0.width / 2, strip1.width / 2},
                .src_strides = {strip0.strides[1], strip1.strides[1]},
                .offsets = {left_inner / 2, middle_inner / 2},
                .rows = chroma_rows,
                .dst = pano.planes[1],
                .dst_stride = pano.strides[1],
                .unit = 2,
                .gap = gap / 2});
}

}  // namespace biseam
