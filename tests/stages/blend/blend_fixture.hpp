#pragma once

#include <cstdint>
#include <cstdlib>
#include <vector>

#include "biseam/biseam.h"
#include "support/test_image.hpp"

namespace biseam::test {

// A configured instance in a zero-filled block of exactly the size it asked for, on a 128-byte address.
class TestInstance {
 public:
  explicit TestInstance(const BlendConfig& config) : config_(config) {
    GetMemSize(&config_, &memory_);
    memory_.base = std::aligned_alloc(128, memory_.size);
    std::fill_n(static_cast<uint8_t*>(memory_.base), memory_.size, uint8_t{0});
    created_ = Blend_Creat(&config_, &memory_, &instance_);
    configured_ = SetConfig_Blend(&instance_);
  }
  ~TestInstance() { std::free(memory_.base); }
  TestInstance(const TestInstance&) = delete;
  TestInstance& operator=(const TestInstance&) = delete;

  int32_t created() const { return created_; }
  int32_t configured() const { return configured_; }
  BlendConfig& config() { return config_; }
  BlendMemory& memory() { return memory_; }
  BlendInstance& operator*() { return instance_; }
  BlendInstance* operator->() { return &instance_; }

  TestImage blend(TestImage& source1, TestImage& source2) {
    TestImage output(instance_.width, instance_.height, 3, -777);
    EXPECT_EQ(0, Blend_Proc(&instance_, source1.record(), source2.record(), output.record()));
    return output;
  }

 private:
  BlendConfig config_;
  BlendMemory memory_{};
  BlendInstance instance_{};
  int32_t created_, configured_;
};

inline TestImage copy_of(const BlendImage& image) {
  TestImage copy(image.width, image.height);
  std::copy_n(image.data[0], copy.samples().size(), copy.samples().begin());
  return copy;
}

inline void overwrite(const BlendImage& image, int32_t value) {
  std::fill_n(image.data[0], int64_t{image.height} * image.stride, value);
}

inline BlendConfig blend_config(int trans_width, int feather, int height, int level_count, int findpath_width = 0,
                                float inv_scale = 1, int findpath_enable = 0) {
  return {trans_width, findpath_width, trans_width + 2 * feather, height, level_count, inv_scale, findpath_enable};
}

}  // namespace biseam::test
