#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "biseam/records.h"
#include "support/random_source.hpp"

namespace biseam::test {

// A blend image over a block of exactly its size, so that the address sanitizer sees every access outside.
class TestImage {
 public:
  TestImage(int width, int height, int channels = 3, int32_t value = 0)
      : samples_(static_cast<size_t>(width) * height * channels, value) {
    record_.width = width;
    record_.height = height;
    record_.channels = channels;
    record_.stride = width * channels;
    for (int k = 0; k < 3; ++k) record_.steps[k] = channels;
    record_.type = BISEAM_RGB;
    point();
  }
  TestImage(const TestImage& other) : samples_(other.samples_), record_(other.record_) { point(); }
  TestImage& operator=(const TestImage& other) {
    samples_ = other.samples_;
    record_ = other.record_;
    point();
    return *this;
  }

  int width() const { return record_.width; }
  int height() const { return record_.height; }
  int channels() const { return record_.channels; }
  int32_t& at(int x, int y, int k) { return samples_.at(index(x, y, k)); }
  int32_t at(int x, int y, int k) const { return samples_.at(index(x, y, k)); }
  std::vector<int32_t>& samples() { return samples_; }
  const std::vector<int32_t>& samples() const { return samples_; }

  BlendImage* record() { return &record_; }
  BlendImage& operator*() { return record_; }

  TestImage& randomize(RandomSource& random, int low, int high) {
    for (int32_t& sample : samples_) sample = random.between(low, high);
    return *this;
  }

 private:
  size_t index(int x, int y, int k) const { return (static_cast<size_t>(y) * width() + x) * channels() + k; }
  void point() {
    for (int k = 0; k < 3; ++k) record_.data[k] = samples_.data() + (k < channels() && !samples_.empty() ? k : 0);
  }

  std::vector<int32_t> samples_;
  BlendImage record_{};
};

// The one-channel counterpart.
class TestGray {
 public:
  TestGray(int width, int height, int32_t value = 0) : samples_(static_cast<size_t>(width) * height, value) {
    record_ = {width, height, 1, width, 1, samples_.data(), BISEAM_GRAY};
  }
  TestGray(const TestGray&) = delete;
  TestGray& operator=(const TestGray&) = delete;

  std::vector<int32_t>& samples() { return samples_; }
  BlendGray* record() { return &record_; }
  BlendGray& operator*() { return record_; }

 private:
  std::vector<int32_t> samples_;
  BlendGray record_;
};

}  // namespace biseam::test
