// What the image primitives take from the heap, give back and keep, and what happens when it is short.
#include <gtest/gtest.h>

#include <cstdint>

#include "biseam/biseam.h"
#include "stages/image/pyr_down.hpp"
#include "stages/image/pyr_up.hpp"
#include "stages/image/resize.hpp"
#include "support/failing_heap.hpp"
#include "support/purposeful_leaks.hpp"
#include "support/test_image.hpp"

namespace biseam::test {
namespace {

constexpr int32_t kOld = -777;

using Stage = Status (*)(const BlendImage&, BlendImage&);
Status resize_image(const BlendImage& src, BlendImage& dst) { return resize(src, dst); }

struct Case {
  Stage stage;
  int src_size, dst_size;
};
constexpr Case kCases[] = {
    {pyr_down_half, 8, 4}, {pyr_down_border, 9, 5}, {pyr_up_double, 4, 8}, {pyr_up_border, 5, 9}, {resize_image, 8, 5}};

TEST(ImageMemory, EveryBlockIsGivenBack) {
  for (const Case& c : kCases) {
    TestImage src(c.src_size, c.src_size), dst(c.dst_size, c.dst_size, 3, kOld);
    const FailingHeap heap;
    EXPECT_EQ(Status::ok, c.stage(*src, *dst));
    EXPECT_EQ(1, heap.requests());
    EXPECT_EQ(0, heap.held());
  }
}

// On purpose larger than the rows need in the exact half.
TEST(PyrDownNormal, BlockTakes144BytesAColumnOfTheEvenWidth) {
  for (int width : {8, 9}) {
    TestImage src(width, 8), dst(4, 4);
    const FailingHeap heap;
    EXPECT_EQ(0, PyrDownNormal(src.record(), dst.record()));
    EXPECT_EQ(144u * 8, heap.bytes_of(0));
  }
}

TEST(PyrUpNormal, BlockTakes72BytesAColumn) {
  TestImage src(5, 4), dst(10, 8);
  const FailingHeap heap;
  EXPECT_EQ(0, PyrUpNormal(src.record(), dst.record()));
  EXPECT_EQ(72u * 5, heap.bytes_of(0));
}

TEST(ImageMemory, ShortMemoryIsReportedAndTheDestinationUntouched) {
  for (const Case& c : kCases) {
    TestImage src(c.src_size, c.src_size), dst(c.dst_size, c.dst_size, 3, kOld);
    const FailingHeap heap(0);
    EXPECT_EQ(Status::no_memory, c.stage(*src, *dst));
    EXPECT_EQ(0, heap.held());
    EXPECT_EQ(TestImage(c.dst_size, c.dst_size, 3, kOld).samples(), dst.samples());
  }
}

TEST(ImageMemory, ExportedFunctionsSurviveShortMemory) {
  TestImage eight(8, 8), four(4, 4, 3, kOld), nine(9, 9), five(5, 5, 3, kOld);
  {
    const FailingHeap heap(0);
    EXPECT_EQ(-1, PyrDown(eight.record(), four.record()));
    EXPECT_EQ(0, heap.held());
  }
  {
    const FailingHeap heap(0);
    EXPECT_EQ(-1, PyrDown(nine.record(), five.record()));
    EXPECT_EQ(0, heap.held());
  }
  {
    const FailingHeap heap(0);
    EXPECT_EQ(0, Resize(eight.record(), five.record(), BISEAM_RGB));
    EXPECT_EQ(0, heap.held());
  }
  EXPECT_EQ(TestImage(5, 5, 3, kOld).samples(), five.samples());
}

TEST(ImageMemory, RefusedStagesTakeNothing) {
  TestImage src(8, 8), dst(7, 7, 3, kOld);
  const FailingHeap heap;
  EXPECT_EQ(Status::mismatch, pyr_down(*src, *dst));
  EXPECT_EQ(Status::mismatch, pyr_down_half(*src, *dst));
  EXPECT_EQ(Status::mismatch, pyr_down_border(*src, *dst));
  EXPECT_EQ(Status::mismatch, pyr_up(*src, *dst));
  EXPECT_EQ(Status::mismatch, pyr_up_double(*src, *dst));
  EXPECT_EQ(Status::mismatch, pyr_up_border(*src, *dst));
  EXPECT_EQ(0, heap.requests());
}

TEST(PyrDownBorder, RefusedCallKeepsItsTwoBlocks) {
  TestImage src(8, 8), dst(7, 7, 3, kOld);
  for (const auto down : {PyrDownBorder, PyrDown}) {
    const PurposefulLeaks leaks;
    const FailingHeap heap;
    EXPECT_EQ(-1, down(src.record(), dst.record()));
    EXPECT_EQ(2, heap.held());
  }
  EXPECT_EQ(TestImage(7, 7, 3, kOld).samples(), dst.samples());
}

TEST(PyrDownBorder, RefusedOneChannelImageKeepsItsTwoBlocks) {
  TestImage src(9, 9, 1), dst(5, 5, 1, kOld);
  const PurposefulLeaks leaks;
  const FailingHeap heap;
  EXPECT_EQ(-1, PyrDownBorder(src.record(), dst.record()));
  EXPECT_EQ(2, heap.held());
  EXPECT_EQ(TestImage(5, 5, 1, kOld).samples(), dst.samples());
}

TEST(PyrUpBorder, RefusedCallKeepsItsTwoBlocks) {
  TestImage src(8, 8), dst(7, 7, 3, kOld);
  for (const auto up : {PyrUpBorder, PyrUp}) {
    const PurposefulLeaks leaks;
    const FailingHeap heap;
    EXPECT_EQ(-1, up(src.record(), dst.record()));
    EXPECT_EQ(2, heap.held());
  }
  EXPECT_EQ(TestImage(7, 7, 3, kOld).samples(), dst.samples());
}

TEST(PyrDownNormal, RefusedCallKeepsNothing) {
  TestImage src(8, 8), dst(7, 7), up(16, 15);
  const FailingHeap heap;
  EXPECT_EQ(-1, PyrDownNormal(src.record(), dst.record()));
  EXPECT_EQ(-1, PyrUpNormal(src.record(), up.record()));
  EXPECT_EQ(0, heap.held());
}

TEST(BorderRoutines, RefusedCallsOfAbsurdSizesKeepNothing) {
  TestImage src(4, 4);
  for (const auto& [width, channels] : {std::pair{INT32_MAX, 3}, {-5, 3}, {INT32_MIN, 1}, {INT32_MAX, INT32_MAX}}) {
    BlendImage from = *src, to = *src;
    to.width = width;
    from.channels = channels;
    const FailingHeap heap;
    EXPECT_EQ(-1, PyrDownBorder(&from, &to));
    EXPECT_EQ(0, heap.held());
  }
}

TEST(PyrUpBorder, ChannelCountBeyondAnyMemoryIsReported) {
  int32_t sample = 0;
  BlendImage src{}, dst{};
  src.width = src.height = 1 << 28;
  dst.width = dst.height = (1 << 29) - 1;
  src.channels = dst.channels = INT32_MAX;
  src.data[0] = dst.data[0] = &sample;
  EXPECT_EQ(Status::no_memory, pyr_up_border(src, dst));
}

}  // namespace
}  // namespace biseam::test
