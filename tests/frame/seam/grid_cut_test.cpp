#include "frame/seam/grid_cut.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "stages/seam/cut.hpp"
#include "stages/seam/images.hpp"
#include "support/failing_heap.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

// Memory of exactly the size that a cut asks for, on the boundary that it asks for, and bytes behind it that stay as they are.
class CutMemory {
 public:
  explicit CutMemory(const BlendGray& detail)
      : size_(static_cast<size_t>(cut_memory_bytes(detail))), bytes_(size_ + kAlignment + kGuard, kPoison) {}
  ~CutMemory() {
    const uint8_t* const end = data() + size_;
    EXPECT_TRUE(std::all_of(end, end + kGuard, [](uint8_t byte) { return byte == kPoison; })) << "written past the memory";
  }
  uint8_t* data() { return bytes_.data() + (-reinterpret_cast<uintptr_t>(bytes_.data()) & (kAlignment - 1)); }

 private:
  static constexpr size_t kAlignment = 32, kGuard = 256;
  static constexpr uint8_t kPoison = 0xA5;
  size_t size_;
  std::vector<uint8_t> bytes_;
};

// A cut within memory, and by way of the general graph.
void expect_same_cut(const BlendGray& detail1, const BlendGray& detail2, int offset, int mask_width, int mask_height,
                     RandomSource& random) {
  const int64_t count = int64_t{3} * mask_width * mask_height;
  GuardedSamples defined(count), fast(count);
  for (int64_t i = 0; i < count; ++i) defined[i] = fast[i] = random.between(0, 4) == 0 ? BISEAM_WEIGHT_ONE : 0;
  BlendImage defined_mask = color_record(defined.data(), mask_width, mask_height);
  BlendImage fast_mask = color_record(fast.data(), mask_width, mask_height);
  ASSERT_EQ(Status::ok, cut_seam(offset, defined_mask, detail1, detail2));
  CutMemory memory(detail1);
  {
    const FailingHeap heap(0, true);
    cut_seam_within(offset, fast_mask, detail1, detail2, memory.data());
    ASSERT_EQ(0, heap.requests());
  }
  ASSERT_EQ(defined.values(), fast.values());
}

// Few and many differences, equal images, and samples whose differences wrap.
std::vector<int32_t> any_details(RandomSource& random, int count) {
  std::vector<int32_t> details(static_cast<size_t>(count), 5);
  const int kind = random.between(0, 3);
  for (int32_t& detail : details) {
    if (kind == 0) detail = random.between(0, 60);
    if (kind == 1) detail = static_cast<int32_t>(random.word());
    if (kind == 2) detail = random.between(0, 8) == 0 ? random.between(0, 255) : 0;
  }
  return details;
}

TEST(CutSeamWithin, IsTheCutOfTheGeneralGraph) {
  RandomSource random;
  for (int round = 0; round < 800; ++round) {
    const int width = random.between(1, 24), height = random.between(1, 24), offset = random.between(-15, 25);
    const int mask_width = random.between(1, 40), mask_height = round % 2 == 0 ? height : random.between(1, 30);
    SCOPED_TRACE(testing::Message() << "round " << round << ": " << width << " x " << height << " at " << offset);
    ExactGray detail1(width, height, any_details(random, width * height));
    ExactGray detail2(width, height, any_details(random, width * height));
    expect_same_cut(detail1.record, detail2.record, offset, mask_width, mask_height, random);
    if (HasFatalFailure()) return;
  }
}

TEST(CutSeamWithin, IsTheCutOfTheGeneralGraphAtTheSizesOfFrames) {
  RandomSource random;
  for (const auto& [width, height] : {std::pair{16, 240}, {32, 480}, {64, 960}}) {
    SCOPED_TRACE(testing::Message() << width << " x " << height);
    ExactGray detail1(width, height, any_details(random, width * height));
    ExactGray detail2(width, height, any_details(random, width * height));
    expect_same_cut(detail1.record, detail2.record, 8, width + 16, height, random);
  }
}

TEST(CutMemoryBytes, StripsWithoutLabelsNeedNone) {
  for (const auto& [width, height] : {std::pair{4, 9}, {9, 4}, {0, 6}, {-3, 6}}) {
    EXPECT_EQ(0, cut_memory_bytes(gray_record(nullptr, width, height)));
  }
}

TEST(CutMemoryBytes, SizesThatNoGraphHasCanNotBeHad) {
  EXPECT_EQ(-1, cut_memory_bytes(gray_record(nullptr, 6690, 6690)));
  EXPECT_EQ(-1, cut_memory_bytes(gray_record(nullptr, 1 << 30, 1 << 30)));
  EXPECT_LT(0, cut_memory_bytes(gray_record(nullptr, 6688, 6688)));
}

}  // namespace
}  // namespace biseam::test
