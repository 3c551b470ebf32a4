#include "stages/seam/smooth.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "base/heap.hpp"
#include "base/truncate.hpp"

namespace biseam {

namespace {

struct Kernel {
  const float* taps;
  int count;
};

// Bytes of so many floats stay within 31 bits.
bool can_be_had(int64_t floats) noexcept { return floats <= std::numeric_limits<int32_t>::max() / int64_t{sizeof(float)}; }

Status no_work_image(MemoryReport report) {
  if (report != nullptr) report("melloc memory for pdTemp failed!!");
  return Status::no_memory;
}

Status no_kernel(MemoryReport report) {
  if (report != nullptr) report("malloc memory for pdKernel,failed!!");
  return Status::no_memory;
}

// Mean around one of `length` samples that lie `stride` apart: taps beyond either end are dropped and the rest renormalised.
// No tap at all gives NaN.
template <class Sample>
float window_mean(const Sample* centre, std::ptrdiff_t stride, int position, int length, Kernel kernel) noexcept {
  const int reach = kernel.count / 2;
  const int first = std::max(-reach, -position);
  const int last = std::min({reach, length - 1 - position, kernel.count - 1 - reach});
  float numerator = 0.0f;
  float denominator = 0.0f;
  for (int j = first; j <= last; ++j) {
    const float tap = kernel.taps[reach + j];
    numerator += tap * static_cast<float>(centre[j * stride]);
    denominator += tap;
  }
  return numerator / denominator;
}

void smooth_row(const int32_t* src, float* out, int width, Kernel kernel) noexcept {
  for (int x = 0; x < width; ++x) out[x] = window_mean(src + x, 1, x, width, kernel);
}

// Row y of the smoothed columns; work points to that row of an image of width x height.
void smooth_columns(const float* work, int32_t* out, int width, int y, int height, Kernel kernel) noexcept {
  for (int x = 0; x < width; ++x) out[x] = truncate_to_int(window_mean(work + x, width, y, height, kernel));
}

}  // namespace

void fill_flat_kernel(float sigma, float* kernel, int taps) {
  const int centre = taps / 2;
  float sum = 0.0f;
  for (int i = 0; i < taps; ++i) {
    const float x = static_cast<float>(i - centre);
    // The coefficient 0 makes the bell flat on purpose: detail is measured against a box mean, and seams depend on it.
    const float exponent = x * 0.0f * x / (sigma * sigma);
    kernel[i] = static_cast<float>(std::exp(static_cast<double>(exponent)) / (static_cast<double>(sigma) * 2.5066282746310002));
    sum += kernel[i];
  }
  for (int i = 0; i < taps; ++i) kernel[i] /= sum;
}

Status smooth(const BlendGray& src, BlendGray& dst, float sigma, int taps, MemoryReport report) {
  const int width = src.width;
  const int height = src.height;
  if (width < 1 || height < 1) return Status::ok;
  const int64_t pixels = int64_t{width} * height;
  if (!can_be_had(pixels)) return no_work_image(report);
  auto work = HeapArray<float>::plain(static_cast<std::size_t>(pixels));
  if (!work) return no_work_image(report);
  if (!can_be_had(taps)) return no_kernel(report);
  auto taps_block = HeapArray<float>::plain(static_cast<std::size_t>(std::max(taps, 1)));
  if (!taps_block) return no_kernel(report);

  fill_flat_kernel(sigma, taps_block.data(), taps);
  const Kernel kernel{taps_block.data(), std::max(taps, 0)};
  for (int y = 0; y < height; ++y)
    smooth_row(src.data + std::ptrdiff_t{y} * src.stride, work.data() + std::ptrdiff_t{y} * width, width, kernel);
  for (int y = 0; y < height; ++y)
    smooth_columns(work.data() + std::ptrdiff_t{y} * width, dst.data + std::ptrdiff_t{y} * dst.stride, width, y, height,
                   kernel);
  return Status::ok;
}

}  // namespace biseam
