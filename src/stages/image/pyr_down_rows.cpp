#include "stages/image/pyr_down_rows.hpp"

#include "base/loop_versions.hpp"
#include "stages/image/pyr_down_kernels.hpp"

namespace biseam {

namespace {

template <bool rounded>
constexpr int32_t result(int32_t sum) {
  return rounded ? reduced_from_sum(sum) : sum;
}

template <bool rounded>
void pixels_scalar(const int32_t* src, int32_t* row, ptrdiff_t pixels) noexcept {
  for (ptrdiff_t x = 0; x < pixels; ++x) {
    const int32_t* s = src + 6 * x;
    for (int k = 0; k < 3; ++k) row[3 * x + k] = result<rounded>(binomial_sum(s[k - 6], s[k - 3], s[k], s[k + 3], s[k + 6]));
  }
}

template <bool rounded>
BISEAM_LOOP void rows_loop(const int32_t* const rows[5], int32_t* out, ptrdiff_t count) noexcept {
  const int32_t *a = rows[0], *b = rows[1], *c = rows[2], *d = rows[3], *e = rows[4];
  BISEAM_TURNS_APART
  for (ptrdiff_t i = 0; i < count; ++i) out[i] = result<rounded>(binomial_sum(a[i], b[i], c[i], d[i], e[i]));
}

}  // namespace

constinit const Variants<ReducePixels> kReducePixels{pixels_scalar<false>, BISEAM_ON_ARM(reduce_pixels_neon),
                                                     BISEAM_ON_X86_64(reduce_pixels_avx2)};
constinit const Variants<ReducePixels> kReducePixelsRounded{pixels_scalar<true>, BISEAM_ON_ARM(reduce_pixels_rounded_neon),
                                                            BISEAM_ON_X86_64(reduce_pixels_rounded_avx2)};
constinit const Variants<ReduceRows> kSumRows = loop_versions<rows_loop<false>, ReduceRows>;
constinit const Variants<ReduceRows> kReduceRows = loop_versions<rows_loop<true>, ReduceRows>;

void reduce_pixels(const int32_t* src, int32_t* row, ptrdiff_t pixels) noexcept { kReducePixels.best()(src, row, pixels); }

void reduce_pixels_rounded(const int32_t* src, int32_t* row, ptrdiff_t pixels) noexcept {
  kReducePixelsRounded.best()(src, row, pixels);
}

void reduce_pixel_at(const int32_t* src, const int32_t columns[5], int32_t* row) noexcept {
  const int32_t* pixels[5];
  for (int i = 0; i < 5; ++i) pixels[i] = src + ptrdiff_t{3} * columns[i];
  for (int k = 0; k < 3; ++k) row[k] = binomial_sum(pixels[0][k], pixels[1][k], pixels[2][k], pixels[3][k], pixels[4][k]);
}

void sum_rows(const int32_t* const rows[5], int32_t* out, ptrdiff_t count) noexcept { kSumRows.best()(rows, out, count); }

void reduce_rows(const int32_t* const rows[5], int32_t* out, ptrdiff_t count) noexcept { kReduceRows.best()(rows, out, count); }

}  // namespace biseam
