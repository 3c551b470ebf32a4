#include "stages/blend/arithmetic.hpp"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace biseam {

namespace {

constexpr int32_t sum(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}
constexpr int32_t difference(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}
constexpr int32_t product(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

// Calls visit(offset) for every sample, three a pixel.
template <class Visit>
void for_each_sample(const BlendImage& layout, Visit visit) {
  for (int y = 0; y < layout.height; ++y) {
    for (int x = 0; x < layout.width; ++x) {
      const ptrdiff_t pixel = ptrdiff_t{y} * layout.stride + ptrdiff_t{x} * layout.steps[0];
      for (int k = 0; k < 3; ++k) visit(pixel + k);
    }
  }
}

bool one_or_three(int channels) { return channels == 1 || channels == 3; }
bool same_size(const BlendImage& a, const BlendImage& b) { return a.height == b.height && a.width == b.width; }

// of_two(a, b) is a sample of out.
template <class OfTwo>
Status combine(const BlendImage& a, const BlendImage& b, BlendImage& out, OfTwo of_two) {
  if (!one_or_three(a.channels) || !one_or_three(b.channels) || !same_size(a, b)) return Status::mismatch;
  for_each_sample(a, [&](ptrdiff_t i) { out.data[0][i] = of_two(a.data[0][i], b.data[0][i]); });
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
  for_each_sample(image, [&](ptrdiff_t i) { image.data[0][i] = value; });
}

Status subtract(const BlendImage& a, const BlendImage& b, BlendImage& out) { return combine(a, b, out, difference); }
Status add(const BlendImage& a, const BlendImage& b, BlendImage& out) { return combine(a, b, out, sum); }
Status multiply(const BlendImage& a, const BlendImage& b, BlendImage& out) { return combine(a, b, out, product); }

Status mix(BlendImage& a, BlendImage& b, const BlendImage& mask, BlendImage& out) {
  if (!same_size(a, b) || !same_size(a, mask) || !same_size(a, out)) return Status::mismatch;
  for_each_sample(a, [&](ptrdiff_t i) {
    const int32_t weight = mask.data[0][i];
    a.data[0][i] = product(a.data[0][i], weight);
    b.data[0][i] = product(b.data[0][i], difference(BISEAM_WEIGHT_ONE, weight));
    out.data[0][i] = sum(a.data[0][i], b.data[0][i]);
  });
  return Status::ok;
}

Status copy_samples(const BlendImage& src, BlendImage& dst) { return copy_at_most(src, dst, sample_count(dst)); }

Status copy_own_samples(const BlendImage& src, BlendImage& dst) {
  return copy_at_most(src, dst, std::min(sample_count(src), sample_count(dst)));
}

}  // namespace biseam
