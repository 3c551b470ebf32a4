#include "stages/image/pyr_down.hpp"

#include <cstddef>
#include <cstdint>

#include "base/align.hpp"
#include "stages/image/border.hpp"
#include "stages/image/row_reduction.hpp"
#include "stages/image/row_ring.hpp"

namespace biseam {

namespace {

constexpr int kTaps = 5;

// A source row to pixels of sums, not rounded.
void reduce_row(const int32_t* src, int src_width, int32_t* row, int width) {
  const int inner_end = find_inner_end(src_width, width);
  for (int x = 0; x < width; ++x) {
    const int32_t* pixels[kTaps];
    for (int i = 0; i < kTaps; ++i) pixels[i] = src + ptrdiff_t{3} * reflected(middle_column(x, inner_end) + i - 2, src_width);
    for (int k = 0; k < 3; ++k) {
      row[ptrdiff_t{3} * x + k] = binomial_sum(pixels[0][k], pixels[1][k], pixels[2][k], pixels[3][k], pixels[4][k]);
    }
  }
}

// Five rows of sums to a row of the result.
void reduce_rows(const int32_t* const rows[kTaps], int32_t* out, ptrdiff_t count) {
  for (ptrdiff_t i = 0; i < count; ++i) {
    out[i] = reduced_from_sum(binomial_sum(rows[0][i], rows[1][i], rows[2][i], rows[3][i], rows[4][i]));
  }
}

// Every source row is filtered once although up to three destination rows use it; the ring keeps at least five.
void reduce(const BlendImage& src, BlendImage& dst, RowRing& ring) {
  int64_t next = -2;  // source row to be filtered, mirrored where it lies outside
  for (int64_t y = 0; y < dst.height; ++y) {
    for (; next <= 2 * y + 2; ++next) {
      const int32_t* row = src.data[0] + ptrdiff_t{reflected(next, src.height)} * src.stride;
      reduce_row(row, src.width, ring.row(next + 2), dst.width);
    }
    const int32_t* rows[kTaps];
    for (int k = 0; k < kTaps; ++k) rows[k] = ring.row(2 * y + k);
    reduce_rows(rows, dst.data[0] + static_cast<ptrdiff_t>(y) * dst.stride, ptrdiff_t{3} * dst.width);
  }
}

bool both_three_channels(const BlendImage& src, const BlendImage& dst) { return src.channels == 3 && dst.channels == 3; }

bool near_half(int src_size, int dst_size) {
  const int64_t difference = int64_t{2} * dst_size - src_size;
  return src_size > 0 && difference >= -2 && difference <= 2;
}

}  // namespace

bool is_half(const BlendImage& src, const BlendImage& dst) {
  return dst.width == src.width / 2 && dst.height == src.height / 2;
}

Status pyr_down(const BlendImage& src, BlendImage& dst) {
  return is_half(src, dst) ? pyr_down_half(src, dst) : pyr_down_border(src, dst);
}

Status pyr_down_half(const BlendImage& src, BlendImage& dst) {
  if (!is_half(src, dst) || !both_three_channels(src, dst) || &src == &dst) return Status::mismatch;
  if ((dst.width != 1 && src.width < 3) || (dst.height != 1 && src.height < 3)) return Status::mismatch;
  // On purpose: so small a source is left to whoever prepared the destination.
  if (src.width < 4 || src.height < 4) return Status::ok;
  // The block keeps its customary size, four times what six rows take.
  RowRing ring = RowRing::plain(6, int64_t{3} * dst.width, int64_t{144 / sizeof(int32_t)} * (src.width & ~1));
  if (!ring) return Status::no_memory;
  reduce(src, dst, ring);
  return Status::ok;
}

Status pyr_down_border(const BlendImage& src, BlendImage& dst) {
  if (!near_half(src.width, dst.width) || !near_half(src.height, dst.height)) return Status::mismatch;
  if (!both_three_channels(src, dst)) return Status::mismatch;
  if (dst.height < 1) return Status::ok;
  const int64_t row_step = align_size(3 * static_cast<uint32_t>(dst.width), 16);
  RowRing ring = RowRing::zeroed(5, row_step);
  if (!ring) return Status::no_memory;
  reduce(src, dst, ring);
  return Status::ok;
}

}  // namespace biseam
