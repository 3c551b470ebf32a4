#include "frame/blend/byte_rows.hpp"

#include "base/loop_versions.hpp"
#include "stages/image/border.hpp"
#include "stages/image/row_expansion.hpp"
#include "stages/image/row_reduction.hpp"

namespace biseam {

namespace {

BISEAM_LOOP void sum_rows_loop(const uint8_t* const rows[5], uint16_t* out, ptrdiff_t count) noexcept {
  const uint8_t *a = rows[0], *b = rows[1], *c = rows[2], *d = rows[3], *e = rows[4];
  BISEAM_TURNS_APART
  for (ptrdiff_t i = 0; i < count; ++i) out[i] = static_cast<uint16_t>(binomial_sum(a[i], b[i], c[i], d[i], e[i]));
}

// Pixels before .. after are named: two on either side.
void reduce_pixel(const uint16_t* const pixels[5], uint8_t* row) noexcept {
  for (int k = 0; k < 3; ++k) {
    const int32_t sum = binomial_sum(pixels[0][k], pixels[1][k], pixels[2][k], pixels[3][k], pixels[4][k]);
    row[k] = static_cast<uint8_t>(reduced_from_sum(sum));
  }
}

void reduce_pixel_at(const uint16_t* sums, const int32_t columns[5], uint8_t* row) noexcept {
  const uint16_t* pixels[5];
  for (int i = 0; i < 5; ++i) pixels[i] = sums + ptrdiff_t{3} * columns[i];
  reduce_pixel(pixels, row);
}

}  // namespace

void reduce_byte_pixels_scalar(const uint16_t* sums, uint8_t* row, ptrdiff_t pixels) noexcept {
  for (ptrdiff_t x = 0; x < pixels; ++x) {
    const uint16_t* s = sums + 6 * x;
    const uint16_t* const around[5] = {s - 6, s - 3, s, s + 3, s + 6};
    reduce_pixel(around, row + 3 * x);
  }
}

void expand_byte_pixels_scalar(const uint8_t* src, uint16_t* row, ptrdiff_t pixels) noexcept {
  for (ptrdiff_t i = 0; i < pixels; ++i) expand_pixel(src + 3 * i - 3, src + 3 * i, src + 3 * i + 3, row + 6 * i, 3);
}

constinit const Variants<SumByteRows> kSumByteRows = loop_versions<sum_rows_loop, SumByteRows>;
constinit const Variants<ReduceBytePixels> kReduceBytePixels{reduce_byte_pixels_scalar, BISEAM_ON_ARM(reduce_byte_pixels_neon),
                                                             BISEAM_ON_X86_64(reduce_byte_pixels_avx2),
                                                             BISEAM_ON_X86_64(reduce_byte_pixels_avx512)};
constinit const Variants<ExpandBytePixels> kExpandBytePixels{expand_byte_pixels_scalar, BISEAM_ON_ARM(expand_byte_pixels_neon),
                                                             BISEAM_ON_X86_64(expand_byte_pixels_avx2),
                                                             BISEAM_ON_X86_64(expand_byte_pixels_avx512)};

RowEdges::RowEdges(int src_width) : width((src_width + 1) / 2), inner_end(find_inner_end(src_width, width)) {
  for (int i = 0; i < 5; ++i) {
    first[i] = reflected(i - 2, src_width);
    last[i] = reflected(int64_t{2} * inner_end + i - 2, src_width);
  }
}

void reduce_byte_row(const uint16_t* sums, uint8_t* row, const RowEdges& edges) noexcept {
  if (edges.width < 1) return;
  kReduceBytePixels.best()(sums + 6, row + 3, edges.inner_end - 1);
  reduce_pixel_at(sums, edges.first, row);
  if (edges.inner_end > 0 && edges.inner_end < edges.width) {
    reduce_pixel_at(sums, edges.last, row + ptrdiff_t{3} * edges.inner_end);
  }
}

void expand_byte_row(const uint8_t* src, uint16_t* row, ptrdiff_t width) noexcept {
  if (width < 1) return;
  expand_outer_pixels(src, row, width, 3);
  kExpandBytePixels.best()(src + 3, row + 6, width - 2);
}

}  // namespace biseam
