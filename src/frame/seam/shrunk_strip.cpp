#include "frame/seam/shrunk_strip.hpp"

#include <algorithm>
#include <cstddef>

#include "frame/seam/detail_rows.hpp"
#include "frame/seam/pick.hpp"
#include "stages/image/resize_map.hpp"
#include "stages/seam/path.hpp"
#include "stages/seam/smooth.hpp"

namespace biseam {

namespace {

// totals[n] = the sum of n taps, added up one by one as the mean of n samples has it.
struct Taps {
  Taps() noexcept {
    float kernel[kDetailTaps];
    fill_flat_kernel(kDetailSigma, kernel, kDetailTaps);
    tap = kernel[0];
    totals[0] = 0.0f;
    for (int n = 0; n < kDetailTaps; ++n) totals[n + 1] = totals[n] + tap;
  }

  // Around one of `length` samples: taps beyond either end don't count.
  float total_at(int32_t position, int32_t length) const noexcept {
    return totals[std::min(position, kDetailReach) + 1 + std::min(length - 1 - position, kDetailReach)];
  }

  float tap;
  float totals[kDetailTaps + 1];
};

// The work image of row means with rows of zeros above and below, a row of samples with zeros on either side, the totals. Zeros
// in a sum are as good as taps left out: a sum that starts from +0 is never -0, and plus zero it stays as it is.
struct DetailMemory {
  DetailMemory(void* memory, int32_t width, int32_t height) noexcept
      : work(static_cast<float*>(memory)),
        samples(work + ptrdiff_t{width} * (ptrdiff_t{height} + 2 * kDetailReach)),
        totals(samples + width + 2 * kDetailReach) {
    std::fill_n(work, ptrdiff_t{width} * kDetailReach, 0.0f);
    std::fill_n(work + ptrdiff_t{width} * (ptrdiff_t{height} + kDetailReach), ptrdiff_t{width} * kDetailReach, 0.0f);
    std::fill_n(samples, kDetailReach, 0.0f);
    std::fill_n(samples + width + kDetailReach, kDetailReach, 0.0f);
  }

  float *work, *samples, *totals;
};

}  // namespace

int64_t strip_memory_bytes(int32_t width, int32_t height) noexcept {
  // Detail: see DetailMemory.  Grays: offsets and one row of pixels, no more than the rows of zeros.
  return int64_t{4} * (int64_t{width} * (int64_t{height} + 2 * kDetailReach + 2) + 2 * kDetailReach);
}

void gray_of_strip(const BytePixels& source, const BlendImage& strip, int findpath_width, int trans_width, int side,
                   BlendGray& gray, void* memory) noexcept {
  if (strip.width < 1 || strip.height < 1 || gray.width < 1 || gray.height < 1) return;
  if (source.width < 1 || source.height < 1) {
    std::fill_n(gray.data, int64_t{gray.width} * gray.height, 0);
    return;
  }
  int32_t* const pixels = static_cast<int32_t*>(memory);
  int32_t* const offsets = pixels + ptrdiff_t{3} * gray.width;
  const int64_t first_column = strip_first_column(source.width, findpath_width, trans_width, side);
  fill_picks(strip.width, gray.width, offsets, gray.width);
  for (int32_t x = 0; x < gray.width; ++x) offsets[x] = nearest_inside(first_column + offsets[x], source.width) * 3;
  const float scale = resize_scale(strip.height, gray.height);
  for (int32_t y = 0; y < gray.height; ++y) {
    const int32_t row = nearest_inside(picked_position(y, scale, strip.height), source.height);
    const uint8_t* const samples = source.data + row * source.stride;
    for (int32_t x = 0; x < gray.width; ++x) {
      for (int k = 0; k < 3; ++k) pixels[3 * x + k] = samples[offsets[x] + k];
    }
    kGrayRow.best()(pixels, gray.data + ptrdiff_t{y} * gray.width, gray.width);
  }
}

void detail_of_gray(const BlendGray& gray, BlendGray& detail, void* memory) noexcept {
  const int32_t width = gray.width;
  const int32_t height = gray.height;
  if (width < 1 || height < 1) return;
  const Taps taps;
  const DetailMemory m(memory, width, height);
  for (int32_t x = 0; x < width; ++x) m.totals[x] = taps.total_at(x, width);
  for (int32_t y = 0; y < height; ++y) {
    const int32_t* const row = gray.data + ptrdiff_t{y} * width;
    for (int32_t x = 0; x < width; ++x) m.samples[kDetailReach + x] = static_cast<float>(row[x]);
    kMeanRow.best()(m.samples, taps.tap, m.totals, m.work + (ptrdiff_t{y} + kDetailReach) * width, width);
  }
  for (int32_t y = 0; y < height; ++y) {
    const ptrdiff_t start = ptrdiff_t{y} * width;
    kDetailRow.best()(m.work + start, width, taps.tap, taps.total_at(y, height), gray.data + start, detail.data + start, width);
  }
}

}  // namespace biseam
