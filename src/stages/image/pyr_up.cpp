#include "stages/image/pyr_up.hpp"

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "stages/image/row_expansion.hpp"
#include "stages/image/row_ring.hpp"

namespace biseam {

namespace {

int32_t* row_of(const BlendImage& image, int64_t y) { return image.data[0] + static_cast<ptrdiff_t>(y) * image.stride; }

// A source row to twice as many pixels of sums.
void expand_row(const int32_t* src, int32_t* row, ptrdiff_t width, int channels) {
  expand_outer_pixels(src, row, width, channels);
  for (ptrdiff_t i = 1; i + 1 < width; ++i) {
    const int32_t* const middle = src + i * channels;
    expand_pixel(middle - channels, middle, middle + channels, row + 2 * i * channels, channels);
  }
}

// Three expanded rows to the output row on the middle one.
void expand_rows_on(const int32_t* above, const int32_t* row, const int32_t* below, int32_t* out, ptrdiff_t count) {
  for (ptrdiff_t i = 0; i < count; ++i) out[i] = expanded_from_sum(sum_on(above[i], row[i], below[i]));
}

// Two to the output row between them.
void expand_rows_between(const int32_t* row, const int32_t* below, int32_t* out, ptrdiff_t count) {
  for (ptrdiff_t i = 0; i < count; ++i) out[i] = expanded_from_sum(sum_between(row[i], below[i]));
}

// The doubled row; a destination with one more column repeats the last one.
void expand_source_row(const BlendImage& src, const BlendImage& dst, int64_t y, int32_t* row) {
  const ptrdiff_t doubled = ptrdiff_t{2} * src.width;
  expand_row(row_of(src, y), row, src.width, src.channels);
  if (dst.width > doubled) {
    int32_t* extra = row + doubled * src.channels;
    std::memcpy(extra, extra - src.channels, static_cast<size_t>(src.channels) * sizeof(int32_t));
  }
}

// Every source row is expanded once although four destination rows use it; the ring keeps three.  Needs a pixel and a row.
void expand(const BlendImage& src, BlendImage& dst, RowRing& ring) {
  const ptrdiff_t count = ptrdiff_t{dst.width} * dst.channels;
  int64_t next = -1;  // source row to be expanded
  for (int64_t y = 0; y < src.height; ++y) {
    for (; next <= y + 1; ++next) {
      expand_source_row(src, dst, expanded_source_row(next, src.height, dst.height), ring.row(next + 1));
    }
    const int32_t* above = ring.row(y);
    const int32_t* row = ring.row(y + 1);
    const int32_t* below = ring.row(y + 2);
    // An odd height ends on a source row: there is no row between it and the next.
    if (2 * y + 1 < dst.height) expand_rows_between(row, below, row_of(dst, 2 * y + 1), count);
    expand_rows_on(above, row, below, row_of(dst, 2 * y), count);
  }
  if (dst.height > int64_t{2} * src.height) {
    std::memcpy(row_of(dst, dst.height - 1), row_of(dst, dst.height - 2), static_cast<size_t>(count) * sizeof(int32_t));
  }
}

// Equal to the double for even sizes, one off for odd ones.
bool near_double(int src_size, int dst_size) {
  const int64_t difference = dst_size - int64_t{2} * src_size;
  return (difference < 0 ? -difference : difference) == dst_size % 2;
}

}  // namespace

bool is_double(const BlendImage& src, const BlendImage& dst) {
  return dst.width == int64_t{2} * src.width && dst.height == int64_t{2} * src.height;
}

Status pyr_up(const BlendImage& src, BlendImage& dst) {
  return is_double(src, dst) ? pyr_up_double(src, dst) : pyr_up_border(src, dst);
}

Status pyr_up_double(const BlendImage& src, BlendImage& dst) {
  if (!is_double(src, dst) || src.channels != 3 || dst.channels != 3) return Status::mismatch;
  // On purpose: so small a source is left to whoever prepared the destination.
  if (src.width < 2 || src.height < 2) return Status::ok;
  const int64_t row_step = int64_t{3} * dst.width;
  RowRing ring = RowRing::plain(3, row_step, 3 * row_step);
  if (!ring) return Status::no_memory;
  expand(src, dst, ring);
  return Status::ok;
}

Status pyr_up_border(const BlendImage& src, BlendImage& dst) {
  if (!near_double(src.width, dst.width) || !near_double(src.height, dst.height)) return Status::mismatch;
  if (src.channels != dst.channels) return Status::mismatch;
  if (src.width < 1 || src.height < 1 || src.channels < 1) return Status::ok;
  const int64_t row_step = ((int64_t{dst.width} + 1) * dst.channels + 15) / 16 * 16;
  RowRing ring = RowRing::zeroed(3, row_step);
  if (!ring) return Status::no_memory;
  expand(src, dst, ring);
  return Status::ok;
}

}  // namespace biseam
