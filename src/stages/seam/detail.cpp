#include "stages/seam/detail.hpp"

#include <cstddef>
#include <cstdint>

#include "base/records.hpp"

namespace biseam {

namespace {

void gray_row(const int32_t* src, int step, int32_t* dst, int width) noexcept {
  for (int x = 0; x < width; ++x, src += step) dst[x] = gray_of(src[0], src[1], src[2]);
}

// A difference of the integer minimum stays as it is.
void difference_row(const int32_t* a, const int32_t* b, int32_t* out, int width) noexcept {
  for (int x = 0; x < width; ++x) {
    const uint32_t difference = static_cast<uint32_t>(a[x]) - static_cast<uint32_t>(b[x]);
    out[x] = static_cast<int32_t>(static_cast<int32_t>(difference) < 0 ? 0u - difference : difference);
  }
}

}  // namespace

void to_gray(const BlendImage& src, BlendGray& dst) {
  if (src.width < 1) return;
  for (int y = 0; y < src.height; ++y)
    gray_row(src.data[0] + std::ptrdiff_t{y} * src.stride, src.steps[0], dst.data + std::ptrdiff_t{y} * src.width, src.width);
}

Status subtract_gray(const BlendGray& a, const BlendGray& b, BlendGray& out) {
  if (a.channels != 1 || b.channels != 1 || a.height != b.height || a.width != b.width) return Status::mismatch;
  if (a.width < 1) return Status::ok;
  for (int y = 0; y < a.height; ++y) {
    const std::ptrdiff_t start = std::ptrdiff_t{y} * a.stride;
    difference_row(a.data + start, b.data + start, out.data + start, a.width);
  }
  return Status::ok;
}

Status extract_detail(const BlendGray& src, BlendGray& dst, MemoryReport report) {
  if (src.width < 1 || src.height < 1) return Status::ok;
  Temporary<BlendGray> mean(src.width, src.height);
  if (!mean) return Status::no_memory;
  if (const Status status = smooth(src, *mean, kDetailSigma, kDetailTaps, report); status != Status::ok) return status;
  return subtract_gray(src, *mean, dst);
}

}  // namespace biseam
