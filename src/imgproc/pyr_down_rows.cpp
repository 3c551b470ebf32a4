#include "imgproc/pyr_down_rows.hpp"

namespace biseam {

void reduce_pixels(const int32_t* src, int32_t* row, ptrdiff_t pixels) noexcept {
  for (ptrdiff_t x = 0; x < pixels; ++x) {
    const int32_t* s = src + 6 * x;
    for (int k = 0; k < 3; ++k) row[3 * x + k] = binomial_sum(s[k - 6], s[k - 3], s[k], s[k + 3], s[k + 6]);
  }
}

void reduce_pixel_at(const int32_t* src, const int32_t columns[5], int32_t* row) noexcept {
  const int32_t* pixels[5];
  for (int i = 0; i < 5; ++i) pixels[i] = src + ptrdiff_t{3} * columns[i];
  for (int k = 0; k < 3; ++k) row[k] = binomial_sum(pixels[0][k], pixels[1][k], pixels[2][k], pixels[3][k], pixels[4][k]);
}

void reduce_rows(const int32_t* const rows[5], int32_t* out, ptrdiff_t count) noexcept {
  for (ptrdiff_t i = 0; i < count; ++i) {
    const int32_t sum = binomial_sum(rows[0][i], rows[1][i], rows[2][i], rows[3][i], rows[4][i]);
    out[i] = static_cast<int32_t>(static_cast<uint32_t>(sum) + 128) >> 8;
  }
}

}  // namespace biseam
