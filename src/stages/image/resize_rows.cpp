#include "stages/image/resize_rows.hpp"

#include <bit>
#include <cstring>
#include <utility>

#include "base/truncate.hpp"

namespace biseam {

namespace {

class RowCache {
 public:
  explicit RowCache(const ResizeWalk& walk)
      : walk_(walk), count_(ptrdiff_t{walk.dst_width} * walk.channels), a_(walk.row_a), b_(walk.row_b) {}

  // Makes a() the mixed columns of source row first and b() those of second.
  void load(int first, int second) {
    if (first == first_ && second == second_) return;
    if (first == second_) {
      std::swap(a_, b_);
      mix(second, b_);
    } else {
      mix(first, a_);
      if (second != first) {
        mix(second, b_);
      } else if (count_ > 0) {
        std::memcpy(b_, a_, static_cast<size_t>(count_) * sizeof(float));
      }
    }
    first_ = first;
    second_ = second;
  }

  const float* a() const { return a_; }
  const float* b() const { return b_; }
  ptrdiff_t count() const { return count_; }

 private:
  void mix(int row, float* buffer) const {
    mix_columns(walk_.src + ptrdiff_t{row} * walk_.src_stride, walk_.columns, buffer, ptrdiff_t{walk_.xmax} * walk_.channels,
                count_, walk_.channels);
  }

  const ResizeWalk& walk_;
  ptrdiff_t count_;
  float *a_, *b_;
  int first_ = -1, second_ = -1;
};

}  // namespace

float weight_of(const ResizeEntry& entry) noexcept { return std::bit_cast<float>(entry.weight); }

void mix_columns(const int32_t* src, const ResizeEntry* columns, float* row, ptrdiff_t mixed, ptrdiff_t count,
                 int channels) noexcept {
  ptrdiff_t i = 0;
  for (; i < mixed && i < count; ++i) {
    const int32_t* s = src + columns[i].offset;
    const float first = static_cast<float>(s[0]);
    row[i] = first + (static_cast<float>(s[channels]) - first) * weight_of(columns[i]);
  }
  for (; i < count; ++i) row[i] = static_cast<float>(src[columns[i].offset]);
}

void mix_two_rows(const float* a, const float* b, float weight, int32_t* dst, ptrdiff_t count) noexcept {
  for (ptrdiff_t i = 0; i < count; ++i) dst[i] = truncate_to_int(a[i] + (b[i] - a[i]) * weight);
}

void store_row(const float* a, int32_t* dst, ptrdiff_t count) noexcept {
  for (ptrdiff_t i = 0; i < count; ++i) dst[i] = truncate_to_int(a[i]);
}

void walk_rows(const ResizeWalk& walk) {
  RowCache cache(walk);
  for (int y = 0; y < walk.dst_height; ++y) {
    const int first = walk.rows[y].offset;
    const float weight = weight_of(walk.rows[y]);
    const int second = weight > 0.0f && first < walk.src_height - 1 ? first + 1 : first;
    cache.load(first, second);
    int32_t* dst = walk.dst + ptrdiff_t{y} * walk.dst_stride;
    if (second != first) {
      mix_two_rows(cache.a(), cache.b(), weight, dst, cache.count());
    } else {
      store_row(cache.a(), dst, cache.count());
    }
  }
}

}  // namespace biseam
