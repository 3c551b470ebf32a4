#include "frame/bands/band_bytes.hpp"

#include <cstddef>
#include <cstdint>

#include "frame/bands/to_rgb_rows.hpp"
#include "frame/blend/reduction.hpp"
#include "frame/blend/workspace.hpp"
#include "stages/blend/widen.hpp"

namespace biseam {

void convert_to_bytes(StitchEngine& e, int band, int format) {
  const ImageHeader& yuv = e.band_yuv[band];
  BlendInstance& instance = *e.blend[band / 2];
  const Pyramids source = band % 2 == 0 ? kSource1 : kSource2;
  const int side = source == kSource1 ? 1 : 0;
  const ByteImage level = Workspace(instance).level(source, 0);
  const ptrdiff_t covered = ptrdiff_t{3} * covered_column(instance.trans_width, side);
  const int pairs = yuv.width / 2;
  for (int y = 0; y < yuv.height; y += 2) {
    uint8_t *const row0 = level.row(y), *const row1 = level.row(y + 1);
    const uint8_t* const luma = yuv.planes[0] + ptrdiff_t{y} * yuv.strides[0];
    if (format == BISEAM_YUV420_SEMIPLANAR) {
      const uint8_t* const chroma = yuv.planes[1] + ptrdiff_t{y / 2} * yuv.strides[1];
      kYuv420RowsToRgb.best()(luma, luma + yuv.strides[0], chroma, row0 + covered, row1 + covered, pairs);
    } else {
      const uint8_t* const chroma = yuv.planes[1] + ptrdiff_t{y} * yuv.strides[1];
      kYuv422RowToRgb.best()(luma, chroma, row0 + covered, pairs);
      kYuv422RowToRgb.best()(luma + yuv.strides[0], chroma + yuv.strides[1], row1 + covered, pairs);
    }
    mirror_byte_edge(row0, level.width, instance.trans_width, side);
    mirror_byte_edge(row1, level.width, instance.trans_width, side);
  }
}

}  // namespace biseam
