#include "frame/seam/shrunk_strip.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "stages/image/resize.hpp"
#include "stages/seam/detail.hpp"
#include "stages/seam/images.hpp"
#include "stages/seam/path.hpp"
#include "support/failing_heap.hpp"
#include "support/test_image.hpp"

namespace biseam::test {
namespace {

constexpr int32_t kUntouched = 7777;

// Scratch of exactly the size asked for, between guards.
struct Scratch {
  Scratch(int width, int height) : block(static_cast<size_t>(strip_memory_bytes(width, height))) {}
  void* data() { return block.data(); }
  GuardedBlock<uint8_t> block;
};

TEST(GrayOfStrip, IsTheGrayOfTheShrunkCopy) {
  const unsigned seed = 33011;
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  const auto below = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  for (int round = 0; round < 1000; ++round) {
    const int width = 1 + below(40), height = 1 + below(30), stride_pixels = width + below(3);
    TestImage source(stride_pixels, height), strip(1 + below(30), 1 + below(35)), shrunk(1 + below(40), 1 + below(40));
    BlendImage view = *source;
    view.width = width;
    for (int32_t& sample : source.samples()) sample = below(256);
    // The last row ends with its last pixel.
    const size_t count = static_cast<size_t>(3 * (stride_pixels * (height - 1) + width));
    const std::vector<uint8_t> bytes(source.samples().begin(), source.samples().begin() + static_cast<ptrdiff_t>(count));
    const BytePixels pixels{bytes.data(), width, height, ptrdiff_t{3} * stride_pixels};
    const int trans = below(20) - 4, side = below(2);
    const int findpath = round % 2 == 0 ? strip.width() : below(60);
    SCOPED_TRACE(testing::Message() << "round " << round);

    copy_strip(view, *strip, findpath, trans, side);
    ASSERT_EQ(resize(*strip, *shrunk), Status::ok);
    TestGray expected(shrunk.width(), shrunk.height());
    to_gray(*shrunk, *expected);

    const BlendImage unused = color_record(nullptr, strip.width(), strip.height());
    GuardedSamples out(int64_t{shrunk.width()} * shrunk.height(), kUntouched);
    BlendGray gray = gray_record(out.data(), shrunk.width(), shrunk.height());
    Scratch scratch(gray.width, gray.height);
    {
      const FailingHeap heap(0, true);
      gray_of_strip(pixels, unused, findpath, trans, side, gray, scratch.data());
      ASSERT_EQ(heap.requests(), 0);
    }
    ASSERT_EQ(expected.samples(), out.values());
  }
}

TEST(GrayOfStrip, SourceWithoutPixelsIsBlack) {
  for (const auto& [w, h] : {std::pair{0, 5}, {5, 0}, {-5, 5}, {5, -5}}) {
    GuardedSamples out(6, kUntouched);
    BlendGray gray = gray_record(out.data(), 3, 2);
    Scratch scratch(3, 2);
    gray_of_strip(BytePixels{nullptr, w, h, 3 * w}, color_record(nullptr, 6, 4), 6, 2, 1, gray, scratch.data());
    EXPECT_EQ(out.values(), std::vector<int32_t>(6, 0));
  }
}

TEST(GrayOfStrip, EmptyStripOrGrayWritesNothing) {
  const std::vector<uint8_t> bytes(3 * 9 * 9);
  const BytePixels source{bytes.data(), 9, 9, 27};
  GuardedSamples out(6, kUntouched);
  for (const auto& [w, h] : {std::pair{0, 3}, {2, 0}, {0, 0}, {-2, 3}}) {
    BlendGray gray = gray_record(out.data(), w, h);
    gray_of_strip(source, color_record(nullptr, 6, 4), 6, 2, 1, gray, nullptr);
    BlendGray whole = gray_record(out.data(), 3, 2);
    gray_of_strip(source, color_record(nullptr, w, h), 6, 2, 1, whole, nullptr);
  }
  EXPECT_EQ(out.values(), std::vector<int32_t>(6, kUntouched));
}

// Every size around the reach of the mean, wide rows, grays up to the ends of what to_gray makes.
TEST(DetailOfGray, IsTheExtractedDetail) {
  const unsigned seed = 33012;
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  for (int round = 0; round < 1200; ++round) {
    const int width = round < 400 ? 1 + round % 20 : 1 + static_cast<int>(random() % 100);
    const int height = round < 400 ? 1 + round / 20 : 1 + static_cast<int>(random() % 40);
    SCOPED_TRACE(testing::Message() << "round " << round << ": " << width << " x " << height);
    std::vector<int32_t> values(static_cast<size_t>(width) * static_cast<size_t>(height));
    for (int32_t& value : values) {
      switch (round % 4) {
        case 0:
          value = static_cast<int32_t>(random()) >> 8;
          break;
        case 1:
          value = random() % 2 == 0 ? (1 << 23) - 1 : -(1 << 23);
          break;
        default:
          value = static_cast<int32_t>(random() % 256);
      }
    }
    if (round % 8 == 7) values.assign(values.size(), static_cast<int32_t>(random() % 256));
    ExactGray gray(width, height, values);
    GuardedSamples expected(int64_t{width} * height, kUntouched), out(int64_t{width} * height, kUntouched);
    BlendGray defined = gray_record(expected.data(), width, height), detail = gray_record(out.data(), width, height);
    ASSERT_EQ(extract_detail(gray.record, defined), Status::ok);
    Scratch scratch(width, height);
    {
      const FailingHeap heap(0, true);
      detail_of_gray(gray.record, detail, scratch.data());
      ASSERT_EQ(heap.requests(), 0);
    }
    ASSERT_EQ(expected.values(), out.values());
    ASSERT_EQ(gray.samples, values);
  }
}

TEST(DetailOfGray, EmptyImageWritesNothing) {
  for (const auto& [w, h] : {std::pair{0, 3}, {3, 0}, {-1, 4}, {4, -1}}) {
    GuardedSamples out(4, kUntouched);
    BlendGray gray = gray_record(nullptr, w, h), detail = gray_record(out.data(), w, h);
    detail_of_gray(gray, detail, nullptr);
    EXPECT_EQ(out.values(), std::vector<int32_t>(4, kUntouched));
  }
}

}  // namespace
}  // namespace biseam::test
