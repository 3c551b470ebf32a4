#include "stages/image/resize.hpp"

#include <cmath>
#include <cstddef>
#include <cstdint>

#include "base/heap.hpp"
#include "stages/image/resize_map.hpp"
#include "stages/image/resize_rows.hpp"

namespace biseam {

namespace {

struct Samples {
  int32_t* data;
  int32_t width, height, channels, stride;
};

Samples samples_of(const BlendImage& image) { return {image.data[0], image.width, image.height, image.channels, image.stride}; }
Samples samples_of(const BlendGray& image) { return {image.data, image.width, image.height, image.channels, image.stride}; }

// Where a destination column or row falls in the source.
struct Cell {
  int32_t index;   // column or row left of or above it, clamped to the image
  int32_t weight;  // distance from there in 1/1024, 0 .. 1024
};

Cell find_cell(int position, float scale, int src_size) {
  const float mapped = mapped_position(position, scale);
  if (mapped < 0.0f) return {0, 0};
  const int32_t index = picked_position(position, scale, src_size);
  if (index == src_size - 1) return {index, 0};
  const float fraction = mapped - static_cast<float>(index);
  const float weight = static_cast<float>(static_cast<double>(fraction) * 1024.0);
  return {index, static_cast<int32_t>(std::round(weight))};
}

// Returns the first column clamped at the right edge.
int fill_columns(const Samples& src, const Samples& dst, ResizeEntry* columns) {
  const float scale = resize_scale(src.width, dst.width);
  int xmax = dst.width;
  for (int x = 0; x < dst.width; ++x) {
    const Cell cell = find_cell(x, scale, src.width);
    if (cell.index == src.width - 1 && xmax == dst.width) xmax = x;
    for (int k = 0; k < src.channels; ++k) {
      columns[ptrdiff_t{x} * src.channels + k] = {cell.index * src.channels + k, cell.weight};
    }
  }
  return xmax;
}

void fill_rows(const Samples& src, const Samples& dst, ResizeEntry* rows) {
  const float scale = resize_scale(src.height, dst.height);
  for (int y = 0; y < dst.height; ++y) {
    const Cell cell = find_cell(y, scale, src.height);
    rows[y] = {cell.index, cell.weight};
  }
}

Status resize_samples(const Samples& src, const Samples& dst) {
  if (src.channels != dst.channels) return Status::mismatch;
  if (src.width < 1 || src.height < 1 || src.channels < 1 || dst.width < 1 || dst.height < 1) return Status::ok;
  // One block: two rows of floats, then the column and the row table.
  static_assert(sizeof(ResizeEntry) == 2 * sizeof(float));
  const uint64_t row = static_cast<uint64_t>(dst.width) * static_cast<uint64_t>(dst.channels);
  const uint64_t entries = 2 * row + static_cast<uint64_t>(dst.height);
  if (entries > PTRDIFF_MAX / sizeof(ResizeEntry)) return Status::no_memory;
  HeapArray<ResizeEntry> block = HeapArray<ResizeEntry>::plain(static_cast<size_t>(entries));
  if (!block) return Status::no_memory;
  float* row_a = reinterpret_cast<float*>(block.data());
  ResizeEntry* columns = block.data() + row;
  ResizeEntry* rows = columns + row;
  const int xmax = fill_columns(src, dst, columns);
  fill_rows(src, dst, rows);
  walk_rows({.src = src.data,
             .src_stride = src.stride,
             .src_height = src.height,
             .dst = dst.data,
             .dst_stride = dst.stride,
             .dst_width = dst.width,
             .dst_height = dst.height,
             .channels = src.channels,
             .xmax = xmax,
             .columns = columns,
             .rows = rows,
             .row_a = row_a,
             .row_b = row_a + row});
  return Status::ok;
}

}  // namespace

Status resize(const BlendImage& src, BlendImage& dst) { return resize_samples(samples_of(src), samples_of(dst)); }
Status resize(const BlendGray& src, BlendGray& dst) { return resize_samples(samples_of(src), samples_of(dst)); }

}  // namespace biseam
