#include "stages/seam/seam_mask.hpp"

#include <algorithm>
#include <cstddef>

namespace biseam {

namespace {

int32_t* mask_row(BlendImage& mask, int64_t y) { return mask.data[0] + static_cast<ptrdiff_t>(y) * mask.width * mask.steps[0]; }

bool has_row(const BlendImage& mask, int64_t y) { return mask.width > 0 && y >= 0 && y < mask.height; }

// The left half of a bottom row.  First samples go to the start of the row, one sample apart instead of one pixel: kept,
// because the blended band depends on it.
void fill_bottom_row(BlendImage& mask, int64_t y) {
  if (!has_row(mask, y)) return;
  int32_t* const row = mask_row(mask, y);
  for (int32_t x = 0; x < mask.width / 2; ++x) {
    int32_t* const pixel = row + ptrdiff_t{x} * mask.steps[0];
    row[x] = pixel[1] = pixel[2] = BISEAM_WEIGHT_ONE;
  }
}

}  // namespace

void fill_span(BlendImage& mask, int64_t y, int64_t first, int64_t end) noexcept {
  if (!has_row(mask, y)) return;
  const int64_t last = std::min<int64_t>(end, mask.width);
  for (int64_t x = std::max<int64_t>(first, 0); x < last; ++x) {
    int32_t* const pixel = mask_row(mask, y) + x * mask.steps[0];
    pixel[0] = pixel[1] = pixel[2] = BISEAM_WEIGHT_ONE;
  }
}

void fill_surroundings(BlendImage& mask, int32_t height, int64_t offset) noexcept {
  for (const int64_t y : {0, 1}) fill_span(mask, y, 0, mask.width / 2);
  for (const int64_t y : {int64_t{height} - 2, int64_t{height} - 1}) fill_bottom_row(mask, y);
  for (int64_t y = 0; y < std::min(height, mask.height); ++y) fill_span(mask, y, 0, offset + kSeamBorder);
}

}  // namespace biseam
