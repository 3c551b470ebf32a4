#include "stages/blend/arithmetic.hpp"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "stages/blend/arithmetic_rows.hpp"

namespace biseam {

namespace {

// Calls run(offset, count) for every stretch of neighbouring samples.
template <class Run>
void for_each_run(const BlendImage& layout, Run run) {
  if (layout.width < 1) return;
  const int step = layout.steps[0];
  for (int y = 0; y < layout.height; ++y) {
    const ptrdiff_t row = ptrdiff_t{y} * layout.stride;
    if (step == 3) {
      run(row, ptrdiff_t{3} * layout.width);
    } else {
      for (int x = 0; x < layout.width; ++x) run(row + ptrdiff_t{x} * step, ptrdiff_t{3});
    }
  }
}

bool one_or_three(int channels) { return channels == 1 || channels == 3; }
bool same_size(const BlendImage& a, const BlendImage& b) { return a.height == b.height && a.width == b.width; }

using CombineRow = void (*)(const int32_t* a, const int32_t* b, int32_t* out, ptrdiff_t count);

Status combine(const BlendImage& a, const BlendImage& b, BlendImage& out, CombineRow combine_row) {
  if (!one_or_three(a.channels) || !one_or_three(b.channels) || !same_size(a, b)) return Status::mismatch;
  for_each_run(a, [&](ptrdiff_t offset, ptrdiff_t count) {
    combine_row(a.data[0] + offset, b.data[0] + offset, out.data[0] + offset, count);
  });
  return Status::ok;
}

int64_t sample_count(const BlendImage& image) { return image.height > 0 ? int64_t{image.height} * image.stride : 0; }

Status copy_at_most(const BlendImage& src, BlendImage& dst, int64_t samples) {
  if (src.stride != dst.stride && dst.stride != src.height && src.type != dst.type) return Status::mismatch;
  if (samples > 0) std::memmove(dst.data[0], src.data[0], static_cast<size_t>(samples) * sizeof(int32_t));
  return Status::ok;
}

}  // namespace

void fill(BlendImage& image, int32_t value) {
  for_each_run(image, [&](ptrdiff_t offset, ptrdiff_t count) { fill_row(image.data[0] + offset, value, count); });
}

Status subtract(const BlendImage& a, const BlendImage& b, BlendImage& out) { return combine(a, b, out, subtract_row); }
Status add(const BlendImage& a, const BlendImage& b, BlendImage& out) { return combine(a, b, out, add_row); }
Status multiply(const BlendImage& a, const BlendImage& b, BlendImage& out) { return combine(a, b, out, multiply_row); }

Status mix(BlendImage& a, BlendImage& b, const BlendImage& mask, BlendImage& out) {
  if (!same_size(a, b) || !same_size(a, mask) || !same_size(a, out)) return Status::mismatch;
  for_each_run(a, [&](ptrdiff_t offset, ptrdiff_t count) {
    mix_row(a.data[0] + offset, b.data[0] + offset, mask.data[0] + offset, out.data[0] + offset, count);
  });
  return Status::ok;
}

Status copy_samples(const BlendImage& src, BlendImage& dst) { return copy_at_most(src, dst, sample_count(dst)); }

Status copy_own_samples(const BlendImage& src, BlendImage& dst) {
  return copy_at_most(src, dst, std::min(sample_count(src), sample_count(dst)));
}

}  // namespace biseam
