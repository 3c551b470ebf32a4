#include "stages/blend/widen.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace biseam {

namespace {

int64_t source_column(int64_t x, int64_t band_width, int64_t trans_width, int side) {
  if (side == 1) {
    const int64_t covered = band_width - trans_width;
    return x < covered ? x : 2 * covered - 1 - x;
  }
  return x < trans_width ? trans_width - 1 - x : x - trans_width;
}

const int32_t* source_row(const BlendImage& source, int y) {
  return source.data[0] + ptrdiff_t{std::min(y, source.height - 1)} * source.stride;
}

int32_t* band_row(const BlendImage& band, int y) { return band.data[0] + ptrdiff_t{y} * band.stride; }

void widen_exactly(const BlendImage& source, BlendImage& band, int trans_width, int side) {
  const size_t bytes = size_t{3} * static_cast<size_t>(source.width) * sizeof(int32_t);
  for (int y = 0; y < band.height; ++y) {
    int32_t* row = band_row(band, y);
    std::memmove(row + ptrdiff_t{3} * covered_column(trans_width, side), source_row(source, y), bytes);
    mirror_edge(row, band.width, trans_width, side);
  }
}

// The definition, for any sizes and layouts.
void widen_pixels(const BlendImage& source, BlendImage& band, int trans_width, int side) {
  for (int y = 0; y < band.height; ++y) {
    const int32_t* from = source_row(source, y);
    int32_t* to = band_row(band, y);
    for (int x = 0; x < band.width; ++x) {
      const int64_t column = source_column(x, band.width, trans_width, side);
      const ptrdiff_t c = static_cast<ptrdiff_t>(std::clamp<int64_t>(column, 0, source.width - 1));
      for (int k = 0; k < 3; ++k) to[ptrdiff_t{x} * band.steps[0] + k] = from[c * source.steps[0] + k];
    }
  }
}

}  // namespace

bool is_widened_exactly(const BlendImage& source, int band_width, int trans_width) {
  return source.steps[0] == 3 && trans_width >= 0 && trans_width <= source.width &&
         int64_t{source.width} + trans_width == band_width;
}

void mirror_edge(int32_t* row, int band_width, int trans_width, int side) noexcept {
  const ptrdiff_t edge = ptrdiff_t{3} * (side == 1 ? band_width - trans_width : trans_width);
  // The edge column is repeated once: pixels at the same distance from the edge are equal.
  for (ptrdiff_t i = 0; i < ptrdiff_t{3} * trans_width; i += 3) {
    const int32_t* from = side == 1 ? row + edge - 3 - i : row + edge + i;
    int32_t* to = side == 1 ? row + edge + i : row + edge - 3 - i;
    std::memcpy(to, from, 3 * sizeof(int32_t));
  }
}

void widen(const BlendImage& source, BlendImage& band, int trans_width, int side) {
  if (source.width < 1 || source.height < 1) return;
  if (band.steps[0] == 3 && is_widened_exactly(source, band.width, trans_width)) {
    widen_exactly(source, band, trans_width, side);
  } else {
    widen_pixels(source, band, trans_width, side);
  }
}

}  // namespace biseam
