#pragma once

#include <cstddef>
#include <cstdint>

#include "base/variants.hpp"
#include "stages/seam/detail.hpp"

// Row kernels of the detail images of the seam search, in their versions.
namespace biseam {

// Samples that a detail's mean reaches to either side.
inline constexpr int kDetailReach = kDetailTaps / 2;

// gray[x] = gray_of pixel x, pixels of three samples.
using GrayRow = void(const int32_t* pixels, int32_t* gray, ptrdiff_t count) noexcept;

// means[x] = sum of tap * samples[x + j] over the taps j / totals[x]; reads count + kDetailTaps - 1 samples.
using MeanRow = void(const float* samples, float tap, const float* totals, float* means, ptrdiff_t count) noexcept;

// detail[x] = |gray[x] - mean[x]|, mean[x] = sum of tap * rows[j * stride + x] over the taps j / total, toward zero.  Grays,
// and so their means, lie within +-2^23.
using DetailRow = void(const float* rows, ptrdiff_t stride, float tap, float total, const int32_t* gray, int32_t* detail,
                       ptrdiff_t count) noexcept;

extern const Variants<GrayRow> kGrayRow;
extern const Variants<MeanRow> kMeanRow;
extern const Variants<DetailRow> kDetailRow;

}  // namespace biseam
