#include "stages/seam/path.hpp"

#include <cstddef>

namespace biseam {

namespace {

void copy_strip_row(const int32_t* source, int source_step, int source_width, int64_t first_column, int32_t* strip,
                    int strip_step, int strip_width) noexcept {
  for (int x = 0; x < strip_width; ++x, strip += strip_step) {
    const int32_t* const pixel = source + ptrdiff_t{nearest_inside(first_column + x, source_width)} * source_step;
    strip[0] = pixel[0];
    strip[1] = pixel[1];
    strip[2] = pixel[2];
  }
}

}  // namespace

int64_t strip_first_column(int source_width, int findpath_width, int trans_width, int side) noexcept {
  const int64_t shift = side != 0 ? int64_t{trans_width} : -int64_t{trans_width};
  return (source_width + shift - findpath_width) / 2;
}

void copy_strip(const BlendImage& source, BlendImage& strip, int findpath_width, int trans_width, int side) {
  if (source.width < 1 || source.height < 1 || strip.width < 1) return;
  const int64_t first_column = strip_first_column(source.width, findpath_width, trans_width, side);
  for (int y = 0; y < strip.height; ++y) {
    const int source_y = nearest_inside(y, source.height);
    copy_strip_row(source.data[0] + ptrdiff_t{source_y} * source.stride, source.steps[0], source.width, first_column,
                   strip.data[0] + ptrdiff_t{y} * strip.stride, strip.steps[0], strip.width);
  }
}

void fill_left_half(BlendImage& mask) {
  if (mask.width < 2) return;
  for (int y = 0; y < mask.height; ++y) {
    int32_t* pixel = mask.data[0] + ptrdiff_t{y} * mask.stride;
    for (int x = 0; x < mask.width >> 1; ++x, pixel += mask.steps[0]) pixel[0] = pixel[1] = pixel[2] = BISEAM_WEIGHT_ONE;
  }
}

}  // namespace biseam
