#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "base/heap.hpp"

namespace biseam {

// Filtered rows that a pass over an image keeps: row i replaces row i - row_count.
class RowRing {
 public:
  // A block of capacity >= row_count * row_step samples.
  static RowRing plain(int row_count, int64_t row_step, int64_t capacity) {
    return RowRing(HeapArray<int32_t>::plain(fitting(capacity)), row_count, row_step);
  }

  // A zero-filled block of row_count rows and 16 samples more.
  static RowRing zeroed(int row_count, int64_t row_step) {
    const int64_t capacity = row_step < kMost / row_count ? row_count * row_step + 16 : kMost;
    return RowRing(HeapArray<int32_t>::zeroed(fitting(capacity)), row_count, row_step);
  }

  explicit operator bool() const { return bool(samples_); }
  int32_t* row(int64_t i) { return samples_.data() + static_cast<ptrdiff_t>(i % row_count_ * row_step_); }

 private:
  static constexpr int64_t kMost = PTRDIFF_MAX / sizeof(int32_t);

  RowRing(HeapArray<int32_t> samples, int row_count, int64_t row_step)
      : samples_(std::move(samples)), row_count_(row_count), row_step_(row_step) {}

  // A count that the host can't address becomes one that no heap has: half the address space might be had on a 32-bit host.
  static size_t fitting(int64_t capacity) {
    return capacity < kMost ? static_cast<size_t>(capacity) : SIZE_MAX / sizeof(int32_t);
  }

  HeapArray<int32_t> samples_;
  int row_count_;
  int64_t row_step_;
};

}  // namespace biseam
