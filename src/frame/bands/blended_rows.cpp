#include "frame/bands/blended_rows.hpp"

#include <cstddef>

#include "frame/bands/to_yuv_rows.hpp"

namespace biseam {

void BlendedRows::take(void* context, int32_t* rows, int y) {
  const auto& [strip, format] = *static_cast<const BlendedRows*>(context);
  const int width = strip.width, pairs = width / 2;
  const int32_t* const pair_rows[2] = {rows, rows + ptrdiff_t{3} * width};
  uint8_t* const luma = strip.planes[0] + ptrdiff_t{y} * strip.strides[0];
  for (int i = 0; i < 2; ++i) kRgbRowToLuma.best()(pair_rows[i], luma + ptrdiff_t{i} * strip.strides[0], width);
  if (format == BISEAM_YUV420_SEMIPLANAR) {
    kRgbRowsToChroma420.best()(pair_rows[0], pair_rows[1], strip.planes[1] + ptrdiff_t{y / 2} * strip.strides[1], pairs);
  } else {
    uint8_t* const chroma = strip.planes[1] + ptrdiff_t{y} * strip.strides[1];
    for (int i = 0; i < 2; ++i) kRgbRowToChroma422.best()(pair_rows[i], chroma + ptrdiff_t{i} * strip.strides[1], pairs);
  }
}

}  // namespace biseam
