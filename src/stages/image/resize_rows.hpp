#pragma once

#include <cstddef>
#include <cstdint>

#include "biseam/records.h"

namespace biseam {

// One pass of the row walk.  Strides are samples; columns has dst_width * channels entries, as many floats are in both buffers.
struct ResizeWalk {
  const int32_t* src;
  int32_t src_stride, src_height;
  int32_t* dst;
  int32_t dst_stride, dst_width, dst_height;
  int32_t channels;
  int32_t xmax;  // first column clamped at the right edge: from here on there is no next pixel
  const ResizeEntry* columns;
  const ResizeEntry* rows;
  float *row_a, *row_b;
};
void walk_rows(const ResizeWalk& walk);

// The 32 bits of a table weight as walk_rows reads them.  Integer weights come out subnormal, so that mixing with them picks
// the first sample.
float weight_of(const ResizeEntry& entry) noexcept;

// Row kernels.  row[i] = s[o] + (s[o + channels] - s[o]) * weight for i < mixed, s[o] up to count, o the entry's offset.
void mix_columns(const int32_t* src, const ResizeEntry* columns, float* row, ptrdiff_t mixed, ptrdiff_t count,
                 int channels) noexcept;

// dst = a + (b - a) * weight, or a, toward zero; saturated.
void mix_two_rows(const float* a, const float* b, float weight, int32_t* dst, ptrdiff_t count) noexcept;
void store_row(const float* a, int32_t* dst, ptrdiff_t count) noexcept;

}  // namespace biseam
