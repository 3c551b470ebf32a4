#include "frame/seam/detail_rows.hpp"

#include "base/loop_versions.hpp"

namespace biseam {

namespace {

BISEAM_LOOP void gray_row(const int32_t* pixels, int32_t* gray, ptrdiff_t count) noexcept {
  for (ptrdiff_t x = 0; x < count; ++x) gray[x] = gray_of(pixels[3 * x], pixels[3 * x + 1], pixels[3 * x + 2]);
}

// Taps in their order: every sum is rounded on its own.
BISEAM_LOOP float weighted_sum(const float* samples, ptrdiff_t stride, float tap) noexcept {
  float sum = 0.0f;
  for (int j = 0; j < kDetailTaps; ++j) sum += tap * samples[j * stride];
  return sum;
}

BISEAM_LOOP void mean_row(const float* samples, float tap, const float* totals, float* means, ptrdiff_t count) noexcept {
  for (ptrdiff_t x = 0; x < count; ++x) means[x] = weighted_sum(samples + x, 1, tap) / totals[x];
}

BISEAM_LOOP void detail_row(const float* rows, ptrdiff_t stride, float tap, float total, const int32_t* gray, int32_t* detail,
                            ptrdiff_t count) noexcept {
  for (ptrdiff_t x = 0; x < count; ++x) {
    const int32_t mean = static_cast<int32_t>(weighted_sum(rows + x, stride, tap) / total);
    const int32_t difference = gray[x] - mean;
    detail[x] = difference < 0 ? -difference : difference;
  }
}

}  // namespace

constinit const Variants<GrayRow> kGrayRow = loop_versions<gray_row, GrayRow>;
constinit const Variants<MeanRow> kMeanRow = loop_versions<mean_row, MeanRow>;
constinit const Variants<DetailRow> kDetailRow = loop_versions<detail_row, DetailRow>;

}  // namespace biseam
