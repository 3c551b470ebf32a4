#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "biseam/records.h"
#include "support/guarded_block.hpp"

namespace biseam::test {

// Samples between guards, all of one value.
class GuardedSamples {
 public:
  explicit GuardedSamples(int64_t count, int32_t value = 0) : block_(static_cast<std::size_t>(count)) {
    std::fill(data(), data() + count, value);
  }

  int32_t* data() { return block_.data(); }
  int32_t& operator[](int64_t i) { return data()[i]; }
  std::vector<int32_t> values() { return block_.values(); }

 private:
  GuardedBlock<int32_t> block_;
};

inline BlendGray gray_record(int32_t* data, int width, int height) { return {width, height, 1, width, 1, data, 8}; }

inline BlendImage color_record(int32_t* data, int width, int height) {
  if (data == nullptr) return {width, height, 3, {}, 3 * width, {3, 3, 3}, 7};
  return {width, height, 3, {data, data + 1, data + 2}, 3 * width, {3, 3, 3}, 7};
}

// A gray image whose samples are an exact heap block: reads beyond it are seen by a sanitizer.
struct ExactGray {
  ExactGray(int width, int height, std::vector<int32_t> values) : samples(std::move(values)) {
    samples.resize(static_cast<size_t>(width) * static_cast<size_t>(height));
    samples.shrink_to_fit();
    record = gray_record(samples.data(), width, height);
  }
  ExactGray(const ExactGray&) = delete;

  std::vector<int32_t> samples;
  BlendGray record;
};

}  // namespace biseam::test
