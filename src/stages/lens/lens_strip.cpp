#include "stages/lens/lens_strip.hpp"

#include <algorithm>

#include "base/panorama_layout.hpp"
#include "stages/lens/trig.hpp"

namespace biseam {

namespace {

// Turns the longitude of the strip's first column so that each lens sees longitudes around its own axis.  The product is a
// float, the difference a double.
float column_offset(int strip, int64_t first_column, float column_step) {
  const float turned = static_cast<float>(first_column) * column_step;
  if (strip == 0) return kHalfPi;
  return static_cast<float>(static_cast<double>(turned) - (strip == 1 ? 1.5707963267948966 : 4.71238898038469));
}

}  // namespace

LensRecord describe_strip(const StitchConfig& config, int strip) {
  constexpr float identity[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
  const bool middle = strip == 1;
  const PanoramaLayout layout = layout_of(config);
  LensRecord lens{};
  lens.focal = middle ? config.p1 : config.p0;
  lens.cx = middle ? config.cx1 : config.cx0;
  lens.cy = middle ? config.cy1 : config.cy0;
  lens.column_step = static_cast<float>(6.283185307179586 / config.out_w[0]);
  lens.row_step = static_cast<float>(3.141592653589793 / config.out_h[0]);
  lens.width = static_cast<int32_t>(layout.strip_widths[strip]);
  lens.rows = config.out_h[0];
  lens.row_offset = 0.0f;
  lens.column_offset = column_offset(strip, layout.strip_columns[strip], lens.column_step);
  lens.focus = config.change_focus;
  std::copy_n(middle ? config.lens_matrix : identity, 9, lens.matrix);
  return lens;
}

}  // namespace biseam
