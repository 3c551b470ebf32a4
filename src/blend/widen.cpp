#include "blend/widen.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace biseam {

namespace {

int64_t source_column(int64_t x, int64_t band_width, int64_t trans_width, int side) {
  if (side == 1) {
    const int64_t covered = band_width - trans_width;
    return x < covered ? x : 2 * covered - 1 - x;
  }
  return x < trans_width ? trans_width - 1 - x : x - trans_width;
}

}  // namespace

void widen(const BlendImage& source, BlendImage& band, int trans_width, int side) {
  if (source.width < 1 || source.height < 1) return;
  for (int y = 0; y < band.height; ++y) {
    const int32_t* from = source.data[0] + ptrdiff_t{std::min(y, source.height - 1)} * source.stride;
    int32_t* to = band.data[0] + ptrdiff_t{y} * band.stride;
    for (int x = 0; x < band.width; ++x) {
      const int64_t column = source_column(x, band.width, trans_width, side);
      const ptrdiff_t c = static_cast<ptrdiff_t>(std::clamp<int64_t>(column, 0, source.width - 1));
      for (int k = 0; k < 3; ++k) to[ptrdiff_t{x} * band.steps[0] + k] = from[c * source.steps[0] + k];
    }
  }
}

}  // namespace biseam
