#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <vector>

#include "biseam/biseam.h"
#include "stages/format/plain_convert.hpp"
#include "support/guarded_block.hpp"

namespace biseam::test {
namespace {

TEST(RgbToYuv, SixFractionalBitsAreDroppedForLuma) {
  const int32_t sample = 64 * 200 + 63;
  int32_t in[6] = {sample, sample, sample, sample, sample, sample};
  uint8_t luma[2], chroma[2];
  YuvView yuv{luma, chroma, 0, 0, 0, 0};
  RgbView rgb{in, 2, 1, 6};
  rgb2yuv422(&yuv, &rgb);
  EXPECT_EQ(200, luma[0]);
  EXPECT_EQ(200, luma[1]);
}

TEST(RgbToYuv, NegativeSamplesShiftWithTheirSign) {
  int32_t in[6] = {-1, -1, -1, 64 * 300, 64 * 300, 64 * 300};  // -1 >> 6 is -1
  uint8_t luma[2], chroma[2];
  YuvView yuv{luma, chroma, 0, 0, 0, 0};
  RgbView rgb{in, 2, 1, 6};
  rgb2yuv422(&yuv, &rgb);
  EXPECT_EQ(0, luma[0]);
  EXPECT_EQ(255, luma[1]);
}

// Red 20 63/64 four times, green 2: the sum keeps the fractions, 20.75 on average, and V becomes 138.04; samples shifted one by
// one would give 137.66.
TEST(RgbToYuv, BlockSumIsShiftedBeforeItIsAveraged) {
  std::vector<int32_t> in;
  for (int i = 0; i < 4; ++i) in.insert(in.end(), {64 * 20 + 63, 128, 0});
  uint8_t luma[4], chroma[2];
  YuvView yuv{luma, chroma, 0, 0, 0, 0};
  RgbView rgb{in.data(), 2, 2, 6};
  rgb2yuv420(&yuv, &rgb);
  EXPECT_EQ(138, chroma[1]);
}

void expect_yuv_like_plain_loops(RandomSource& random, void (*convert)(YuvView*, RgbView*), int width, int height,
                                 int block_rows, bool any_value) {
  SCOPED_TRACE(testing::Message() << width << " x " << height);
  std::vector<int32_t> in = random_rgb(random, width, height, any_value);
  RgbView rgb{in.data(), width, height, 3 * width};
  YuvPlanes out{std::vector<uint8_t>(size_t(width) * size_t(height), 77),
                std::vector<uint8_t>(chroma_bytes(width, height, block_rows), 77)};
  YuvView yuv{out.luma.data(), out.chroma.data(), -1, -1, -1, -1};
  convert(&yuv, &rgb);
  GuardedBlock<uint8_t> luma(out.luma.size()), chroma(out.chroma.size());
  yuv = {luma.data(), chroma.data(), -1, -1, -1, -1};
  convert(&yuv, &rgb);
  EXPECT_EQ(naive_to_yuv(in, width, height, block_rows, 77), out);
  EXPECT_EQ(out.luma, luma.values());
}

TEST(RgbToYuv, EvenSizesEqualThePlainLoops) {
  RandomSource random;
  for (int run = 0; run < 40; ++run) {
    const int width = 2 * random.between(1, 24), height = 2 * random.between(1, 12);
    expect_yuv_like_plain_loops(random, rgb2yuv420, width, height, 2, false);
    expect_yuv_like_plain_loops(random, rgb2yuv422, width, height, 1, false);
  }
}

// Odd sizes: column x + 1 and row y + 1 of the last block are read inside the samples only.
TEST(RgbToYuv, OddWidthsAndHeightsStayInsideThePlanes) {
  RandomSource random;
  for (int width = 1; width <= 9; ++width) {
    for (int height = 1; height <= 7; ++height) {
      expect_yuv_like_plain_loops(random, rgb2yuv420, width, height, 2, false);
      expect_yuv_like_plain_loops(random, rgb2yuv422, width, height, 1, false);
    }
  }
}

TEST(RgbToYuv, AnySampleValueWrapsInsteadOfOverflowing) {
  RandomSource random;
  for (int run = 0; run < 40; ++run) {
    expect_yuv_like_plain_loops(random, rgb2yuv420, 16, 8, 2, true);
    expect_yuv_like_plain_loops(random, rgb2yuv422, 16, 8, 1, true);
  }
  std::vector<int32_t> largest(12, INT_MAX);
  YuvPlanes out{std::vector<uint8_t>(4), std::vector<uint8_t>(2)};
  YuvView yuv = view_of(out, 2, 2);
  RgbView rgb{largest.data(), 2, 2, 6};
  rgb2yuv420(&yuv, &rgb);
  EXPECT_EQ(naive_to_yuv(largest, 2, 2, 2, 0), out);
}

TEST(RgbToYuv, EmptyImagesAreLeftAlone) {
  GuardedBlock<int32_t> samples(12);
  GuardedBlock<uint8_t> luma(4), chroma(4);
  for (const auto& [width, height] : {std::pair{0, 4}, {4, 0}, {0, 0}, {-2, 4}, {4, -2}}) {
    for (auto convert : {rgb2yuv420, rgb2yuv422}) {
      YuvView yuv{luma.data(), chroma.data(), width, height, width, width};
      RgbView rgb{samples.data(), width, height, 3 * width};
      convert(&yuv, &rgb);
    }
  }
  EXPECT_EQ(GuardedBlock<uint8_t>(4).values(), luma.values());
  EXPECT_EQ(GuardedBlock<uint8_t>(4).values(), chroma.values());
}

TEST(RgbToYuv, LumaAndChromaOverTheirOwnPixels) {
  RandomSource random;
  constexpr int width = 200;
  std::vector<int32_t> want = random_rgb(random, width, 1, false);
  std::vector<int32_t> got = want;
  std::vector<uint8_t> chroma(width);
  auto* const bytes = reinterpret_cast<uint8_t*>(want.data());
  for (int x = 0; x < width; ++x) {
    const int32_t p[3] = {want[size_t(3 * x)], want[size_t(3 * x + 1)], want[size_t(3 * x + 2)]};
    bytes[x] = static_cast<uint8_t>(luma_of(p[0] >> 6, p[1] >> 6, p[2] >> 6));
  }
  const YuvPlanes of_what_is_left = naive_to_yuv(want, width, 1, 1, 0);
  YuvView yuv{reinterpret_cast<uint8_t*>(got.data()), chroma.data(), 0, 0, 0, 0};
  RgbView rgb{got.data(), width, 1, 3 * width};
  rgb2yuv422(&yuv, &rgb);
  EXPECT_EQ(want, got);
  EXPECT_EQ(of_what_is_left.chroma, chroma);
}

TEST(RgbToYuv, TakesSizeAndStrideFromTheRgbView) {
  RandomSource random;
  const int width = 6, height = 4, stride = 29;
  const std::vector<int32_t> tight = random_rgb(random, width, height, false);
  std::vector<int32_t> padded(size_t(stride * (height - 1) + 3 * width), 1 << 20);  // the last row ends with its last pixel
  for (int y = 0; y < height; ++y) std::memcpy(&padded[size_t(y * stride)], &tight[size_t(y * 3 * width)], 3 * width * 4);
  for (const int block_rows : {1, 2}) {
    GuardedBlock<uint8_t> luma(size_t(width * height)), chroma(chroma_bytes(width, height, block_rows));
    YuvView yuv{luma.data(), chroma.data(), 99, 98, 97, 96};
    RgbView rgb{padded.data(), width, height, stride};
    (block_rows == 2 ? rgb2yuv420 : rgb2yuv422)(&yuv, &rgb);
    const YuvPlanes want = naive_to_yuv(tight, width, height, block_rows, 0);
    EXPECT_EQ(want.luma, luma.values());
    EXPECT_EQ(want.chroma, chroma.values());
    EXPECT_EQ(width, yuv.width);
    EXPECT_EQ(height, yuv.height);
    EXPECT_EQ(width, yuv.luma_stride);
    EXPECT_EQ(width, yuv.chroma_stride);
    EXPECT_EQ(stride, rgb.stride);
  }
}

}  // namespace
}  // namespace biseam::test
