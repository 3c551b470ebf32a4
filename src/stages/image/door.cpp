// The exported functions of pyramids, borders and resizing.
#include <cstdlib>

#include "base/align.hpp"
#include "biseam/biseam.h"
#include "stages/image/border.hpp"
#include "stages/image/pyr_down.hpp"
#include "stages/image/pyr_up.hpp"
#include "stages/image/resize.hpp"
#include "stages/image/resize_rows.hpp"

using biseam::Status;

namespace {

// On purpose: the exported border routines reserve a row ring and a column table before they look at the sizes and do not give
// them back when they refuse.  Hosts count these blocks.
void keep_block(int64_t samples) {
  if (samples < 0 || samples > INT32_MAX / int64_t{sizeof(int32_t)}) return;
  void* volatile kept = std::calloc(static_cast<size_t>(samples), sizeof(int32_t));
  (void)kept;
}  // NOLINT(clang-analyzer-unix.Malloc)

void keep_blocks(int ring_rows, int64_t ring_row_samples, int64_t column_samples) {
  if (ring_row_samples >= 0 && ring_row_samples <= INT32_MAX) keep_block(ring_rows * ((ring_row_samples + 15) / 16 * 16) + 16);
  keep_block(column_samples);
}

int32_t down_border(const BlendImage& src, BlendImage& dst) {
  const Status status = biseam::pyr_down_border(src, dst);
  const int64_t row = int64_t{dst.width} * src.channels;
  if (status == Status::mismatch) keep_blocks(5, row, row);
  return biseam::code_of(status);
}

int32_t up_border(const BlendImage& src, BlendImage& dst) {
  const Status status = biseam::pyr_up_border(src, dst);
  if (status == Status::mismatch) {
    keep_blocks(3, (int64_t{dst.width} + 1) * src.channels, int64_t{src.width} * src.channels);
  }
  return biseam::code_of(status);
}

}  // namespace

int32_t PyrDown(BlendImage* src, BlendImage* dst) {
  return biseam::is_half(*src, *dst) ? biseam::code_of(biseam::pyr_down_half(*src, *dst)) : down_border(*src, *dst);
}
int32_t PyrDownNormal(BlendImage* src, BlendImage* dst) { return biseam::code_of(biseam::pyr_down_half(*src, *dst)); }
int32_t PyrDownBorder(BlendImage* src, BlendImage* dst) { return down_border(*src, *dst); }

int32_t PyrUp(BlendImage* src, BlendImage* dst) {
  return biseam::is_double(*src, *dst) ? biseam::code_of(biseam::pyr_up_double(*src, *dst)) : up_border(*src, *dst);
}
int32_t PyrUpNormal(BlendImage* src, BlendImage* dst) { return biseam::code_of(biseam::pyr_up_double(*src, *dst)); }
int32_t PyrUpBorder(BlendImage* src, BlendImage* dst) { return up_border(*src, *dst); }

int32_t BorderInterpolate(int32_t* out, int32_t p, int32_t len, int32_t borderType) {
  biseam::border_index(*out, p, len, borderType);
  return 0;
}

uint32_t AlignSize(uint32_t size, int32_t align) { return biseam::align_size(size, static_cast<uint32_t>(align)); }
float* AlignPtr_float(float* address, int32_t align) { return biseam::align_pointer(address, static_cast<uint32_t>(align)); }

int32_t Resize(void* src, void* dst, int32_t type) {
  if (type == BISEAM_RGB) {
    (void)biseam::resize(*static_cast<BlendImage*>(src), *static_cast<BlendImage*>(dst));
  } else {
    (void)biseam::resize(*static_cast<BlendGray*>(src), *static_cast<BlendGray*>(dst));
  }
  return 0;
}

int32_t Resize_Bilinear(const int32_t* src, int32_t src_stride, int32_t, int32_t src_height, int32_t* dst, int32_t dst_stride,
                        int32_t dst_width, int32_t dst_height, int32_t channels, int32_t xmax, const ResizeEntry* columns,
                        const ResizeEntry* rows, float* row_a, float* row_b) {
  biseam::walk_rows({.src = src,
                     .src_stride = src_stride,
                     .src_height = src_height,
                     .dst = dst,
                     .dst_stride = dst_stride,
                     .dst_width = dst_width,
                     .dst_height = dst_height,
                     .channels = channels,
                     .xmax = xmax,
                     .columns = columns,
                     .rows = rows,
                     .row_a = row_a,
                     .row_b = row_b});
  return 0;
}
