#include "stages/image/pyr_up_rows.hpp"

#include "base/loop_versions.hpp"
#include "stages/image/pyr_up_kernels.hpp"
#include "stages/image/pyr_up_sums.hpp"

namespace biseam {

namespace {

void pixels_scalar(const int32_t* src, int32_t* row, ptrdiff_t pixels) noexcept {
  for (ptrdiff_t i = 0; i < pixels; ++i) {
    for (int k = 0; k < 3; ++k) {
      const int32_t* s = src + 3 * i + k;
      row[6 * i + k] = static_cast<int32_t>(sum_on(s[-3], s[0], s[3]));
      row[6 * i + k + 3] = static_cast<int32_t>(sum_between(s[0], s[3]));
    }
  }
}

// One pixel whose neighbours are named.
void expand_pixel(const int32_t* before, const int32_t* middle, const int32_t* after, int32_t* out, int channels) {
  for (int k = 0; k < channels; ++k) {
    out[k] = static_cast<int32_t>(sum_on(before[k], middle[k], after[k]));
    out[k + channels] = static_cast<int32_t>(sum_between(middle[k], after[k]));
  }
}

BISEAM_LOOP void rows_on(const int32_t* above, const int32_t* row, const int32_t* below, int32_t* out,
                         ptrdiff_t count) noexcept {
  BISEAM_TURNS_APART
  for (ptrdiff_t i = 0; i < count; ++i) out[i] = expanded_from_sum(sum_on(above[i], row[i], below[i]));
}

BISEAM_LOOP void rows_between(const int32_t* row, const int32_t* below, int32_t* out, ptrdiff_t count) noexcept {
  BISEAM_TURNS_APART
  for (ptrdiff_t i = 0; i < count; ++i) out[i] = expanded_from_sum(sum_between(row[i], below[i]));
}

}  // namespace

constinit const Variants<ExpandPixels> kExpandPixels{pixels_scalar, BISEAM_ON_ARM(expand_pixels_neon),
                                                     BISEAM_ON_X86_64(expand_pixels_avx2),
                                                     BISEAM_ON_X86_64(expand_pixels_avx512)};
constinit const Variants<ExpandRowsOn> kExpandRowsOn = loop_versions<rows_on, ExpandRowsOn>;
constinit const Variants<ExpandRowsBetween> kExpandRowsBetween = loop_versions<rows_between, ExpandRowsBetween>;

void expand_row(const int32_t* src, int32_t* row, ptrdiff_t width, int channels) noexcept {
  if (width < 1) return;
  const int32_t* const second = width > 1 ? src + channels : src;
  expand_pixel(second, src, second, row, channels);
  if (width < 2) return;
  if (channels == 3) {
    kExpandPixels.best()(src + 3, row + 6, width - 2);
  } else {
    for (ptrdiff_t i = 1; i + 1 < width; ++i) {
      const int32_t* middle = src + i * channels;
      expand_pixel(middle - channels, middle, middle + channels, row + 2 * i * channels, channels);
    }
  }
  const int32_t* const last = src + (width - 1) * channels;
  expand_pixel(last - channels, last, last, row + 2 * (width - 1) * channels, channels);
}

void expand_rows_on(const int32_t* above, const int32_t* row, const int32_t* below, int32_t* out, ptrdiff_t count) noexcept {
  kExpandRowsOn.best()(above, row, below, out, count);
}

void expand_rows_between(const int32_t* row, const int32_t* below, int32_t* out, ptrdiff_t count) noexcept {
  kExpandRowsBetween.best()(row, below, out, count);
}

}  // namespace biseam
