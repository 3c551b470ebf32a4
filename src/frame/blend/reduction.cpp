#include "frame/blend/reduction.hpp"

#include <cstddef>

#include "frame/blend/blend_rows.hpp"
#include "frame/blend/byte_rows.hpp"
#include "stages/image/border.hpp"

namespace biseam {

namespace {

// Reduces row by row; before a row, have_rows(end) sees to it that the level's rows up to that one are there.
template <class HaveRows>
bool reduce(const ByteImage& level, const ByteImage& reduced, uint16_t* sums, HaveRows have_rows) {
  const RowEdges edges(level.width);
  for (int y = 0; y < reduced.height; ++y) {
    if (!have_rows(2 * y + 3)) return false;
    const uint8_t* rows[5];
    for (int k = 0; k < 5; ++k) rows[k] = level.row(reflected(int64_t{2} * y + k - 2, level.height));
    kSumByteRows.best()(rows, sums, level.row_samples());
    reduce_byte_row(sums, reduced.row(y), edges);
  }
  return true;
}

}  // namespace

void mirror_byte_edge(uint8_t* row, int band_width, int trans_width, int side) noexcept {
  if (trans_width < 1) return;
  const ptrdiff_t edge = ptrdiff_t{3} * (side == 1 ? band_width - trans_width : trans_width);
  if (side == 1) {
    kMirrorBytePixels.best()(row + edge - 3, row + edge, trans_width);
  } else {
    kMirrorBytePixels.best()(row + 2 * edge - 3, row, trans_width);
  }
}

void reduce_level(const ByteImage& level, const ByteImage& reduced, uint16_t* sums) {
  reduce(level, reduced, sums, [](int) { return true; });
}

bool narrow_and_reduce(const BlendImage& image, uint32_t most, const ByteImage& level, const ByteImage& reduced,
                       uint16_t* sums) {
  uint32_t largest = 0;
  int next = 0;  // row to be narrowed
  return reduce(level, reduced, sums, [&](int end) {
    for (; next < end && next < image.height; ++next) {
      kNarrowRow.best()(image.data[0] + ptrdiff_t{next} * image.stride, level.row(next), level.row_samples(), largest);
    }
    return largest <= most;
  });
}

}  // namespace biseam
