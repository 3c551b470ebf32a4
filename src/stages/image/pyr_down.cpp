#include "stages/image/pyr_down.hpp"

#include <cstddef>
#include <cstdint>

#include "base/align.hpp"
#include "stages/image/border.hpp"
#include "stages/image/pyr_down_rows.hpp"
#include "stages/image/row_reduction.hpp"
#include "stages/image/row_ring.hpp"

namespace biseam {

namespace {

// Every source row is filtered once although up to three destination rows use it; the ring keeps at least five.
void reduce(const BlendImage& src, BlendImage& dst, RowRing& ring) {
  const RowEdges edges = find_edges(src.width, dst.width);
  int64_t next = -2;  // source row to be filtered, mirrored where it lies outside
  for (int64_t y = 0; y < dst.height; ++y) {
    for (; next <= 2 * y + 2; ++next) {
      const int32_t* row = src.data[0] + ptrdiff_t{reflected(next, src.height)} * src.stride;
      reduce_row(row, ring.row(next + 2), dst.width, edges);
    }
    const int32_t* rows[5];
    for (int k = 0; k < 5; ++k) rows[k] = ring.row(2 * y + k);
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
