#include "frame/bands/band_bytes.hpp"

#include <cstddef>
#include <cstdint>

#include "frame/bands/to_rgb_rows.hpp"
#include "frame/blend/byte_image.hpp"
#include "frame/blend/narrow_reduction.hpp"
#include "frame/blend/streamed_band.hpp"
#include "stages/blend/widen.hpp"

namespace biseam {

namespace {

bool is_converted_in_pairs(const ImageHeader& yuv, const BlendImage& rgb) {
  return yuv.width == rgb.width && yuv.height == rgb.height && yuv.width % 2 == 0 && yuv.height % 2 == 0 &&
         rgb.type == BISEAM_RGB && rgb.stride == int64_t{3} * rgb.width;
}

}  // namespace

bool takes_bytes(const StitchEngine& e, int overlap, int format) {
  if (format != BISEAM_YUV420_SEMIPLANAR && format != BISEAM_YUV422_SEMIPLANAR) return false;
  const BlendImage* const sources[2] = {&e.band_rgb[2 * overlap], &e.band_rgb[2 * overlap + 1]};
  for (int i = 0; i < 2; ++i) {
    if (!is_converted_in_pairs(e.band_yuv[2 * overlap + i], *sources[i])) return false;
  }
  return can_be_streamed(*e.blend[overlap], sources, e.blend_out[overlap]);
}

void convert_to_bytes(StitchEngine& e, int band, int format) {
  const ImageHeader& yuv = e.band_yuv[band];
  const BlendInstance& instance = *e.blend[band / 2];
  const int source = band % 2, side = source == 0 ? 1 : 0;
  const ByteImage level = ByteImage::in(instance.levels[source][0]);
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
