#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "biseam/biseam.h"
#include "stages/format/plain_convert.hpp"
#include "support/guarded_block.hpp"

namespace biseam::test {
namespace {

Rgb convert_one_pixel(uint8_t y, uint8_t u, uint8_t v) {
  uint8_t luma[2] = {y, y}, chroma[2] = {u, v};
  int32_t out[6] = {};
  YuvView yuv{luma, chroma, 2, 1, 2, 2};
  RgbView rgb{out, 2, 1, 6};
  yuv422_2rgb(&yuv, &rgb);
  return {out[0], out[1], out[2]};
}

TEST(YuvToRgb, FullLumaWithNeutralChromaIsWhite) {
  const Rgb p = convert_one_pixel(255, 128, 128);
  EXPECT_EQ(255, p.r);
  EXPECT_EQ(255, p.g);
  EXPECT_EQ(255, p.b);
}

TEST(YuvToRgb, FullVOverBlackGivesRed178) { EXPECT_EQ(178, convert_one_pixel(0, 128, 255).r); }

TEST(YuvToRgb, NegativeIntermediatesClampToZero) {
  EXPECT_EQ(0, convert_one_pixel(0, 128, 0).r);
  EXPECT_EQ(0, convert_one_pixel(0, 129, 128).g);  // -0.3441
  EXPECT_EQ(0, convert_one_pixel(0, 128, 129).g);  // -0.7141 truncates toward zero after the half is added
  EXPECT_EQ(255, convert_one_pixel(255, 255, 255).r);
}

TEST(YuvToRgb, EveryLumaWithManyChromaPairs) {
  std::vector<uint8_t> luma(512), chroma(512);
  std::vector<int32_t> out(3 * 512);
  for (int i = 0; i < 512; ++i) luma[size_t(i)] = static_cast<uint8_t>(i / 2);
  for (int u = 0; u < 256; u += 5) {
    for (int v = 0; v < 256; v += 3) {
      for (int i = 0; i < 512; ++i) chroma[size_t(i)] = static_cast<uint8_t>(i % 2 == 0 ? u : v);
      YuvView yuv{luma.data(), chroma.data(), 512, 1, 512, 512};
      RgbView rgb{out.data(), 512, 1, 0};
      yuv422_2rgb(&yuv, &rgb);
      for (int x = 0; x < 512; x += 2) {
        const Rgb want = pixel_of(x / 2, u, v);
        ASSERT_EQ(want.r, out[size_t(3 * x)]) << x / 2 << ' ' << u << ' ' << v;
        ASSERT_EQ(want.g, out[size_t(3 * x + 1)]) << x / 2 << ' ' << u << ' ' << v;
        ASSERT_EQ(want.b, out[size_t(3 * x + 2)]) << x / 2 << ' ' << u << ' ' << v;
      }
    }
  }
}

template <class Sample>
void expect_rgb_like_plain_loops(RandomSource& random, void (*convert)(YuvView*, RgbView*), int width, int height,
                                 int block_rows) {
  SCOPED_TRACE(testing::Message() << width << " x " << height);
  YuvPlanes planes = random_yuv(random, width, height, block_rows);
  YuvView yuv = view_of(planes, width, height);
  std::vector<Sample> out(3 * size_t(width) * size_t(height), Sample{77});  // exact size, for the address sanitizer
  GuardedBlock<Sample> guarded(out.size());
  RgbView rgb{out.data(), width, height, 3 * width};
  convert(&yuv, &rgb);
  rgb = {guarded.data(), width, height, 3 * width};
  convert(&yuv, &rgb);
  EXPECT_EQ(naive_to_rgb<Sample>(planes.luma, planes.chroma, width, height, block_rows, Sample{77}), out);
  EXPECT_EQ(out, guarded.values());
}

TEST(YuvToRgb, EvenSizesEqualThePlainLoops) {
  RandomSource random;
  for (int run = 0; run < 40; ++run) {
    const int width = 2 * random.between(1, 24), height = 2 * random.between(1, 12);
    expect_rgb_like_plain_loops<int32_t>(random, yuv420_2rgb, width, height, 2);
    expect_rgb_like_plain_loops<int32_t>(random, yuv422_2rgb, width, height, 1);
    expect_rgb_like_plain_loops<uint8_t>(random, yuv420_2rgbnew, width, height, 2);
    expect_rgb_like_plain_loops<uint8_t>(random, yuv422_2rgbnew, width, height, 1);
  }
}

// Odd sizes: column x + 1 and row y + 1 of the last block are touched inside the planes only.
TEST(YuvToRgb, OddWidthsAndHeightsStayInsideThePlanes) {
  RandomSource random;
  for (int width = 1; width <= 9; ++width) {
    for (int height = 1; height <= 7; ++height) {
      expect_rgb_like_plain_loops<int32_t>(random, yuv420_2rgb, width, height, 2);
      expect_rgb_like_plain_loops<int32_t>(random, yuv422_2rgb, width, height, 1);
      expect_rgb_like_plain_loops<uint8_t>(random, yuv420_2rgbnew, width, height, 2);
      expect_rgb_like_plain_loops<uint8_t>(random, yuv422_2rgbnew, width, height, 1);
    }
  }
}

// With an odd width the last block's right column is the next row's first pixel, which keeps that block's chroma in the lower
// row.
TEST(YuvToRgb, OddWidthTouchesTheNextRowsFirstPixel) {
  YuvPlanes planes{{10, 20, 30, 40, 50, 60}, {128, 128, 128}};  // 3 x 2; the second pair is 128 and, past the plane, 128
  planes.chroma = {90, 200, 60};                                // second pair: 60, and V of the first stands in
  YuvView yuv = view_of(planes, 3, 2);
  std::vector<int32_t> out(18);
  RgbView rgb{out.data(), 3, 2, 9};
  yuv420_2rgb(&yuv, &rgb);
  const Rgb touched = pixel_of(40, 60, 200);
  EXPECT_EQ(touched.r, out[9]);
  EXPECT_EQ(touched.g, out[10]);
  EXPECT_EQ(touched.b, out[11]);
}

TEST(YuvToRgb, EmptyImagesAreLeftAlone) {
  GuardedBlock<int32_t> samples(12);
  GuardedBlock<uint8_t> luma(4), chroma(4);
  for (const auto& [width, height] : {std::pair{0, 4}, {4, 0}, {0, 0}, {-2, 4}, {4, -2}}) {
    for (auto convert : {yuv420_2rgb, yuv422_2rgb, yuv420_2rgbnew, yuv422_2rgbnew}) {
      YuvView yuv{luma.data(), chroma.data(), width, height, width, width};
      RgbView rgb{samples.data(), width, height, 3 * width};
      convert(&yuv, &rgb);
    }
  }
  EXPECT_EQ(GuardedBlock<int32_t>(12).values(), samples.values());
}

// Pixel by pixel, luma before chroma, whatever has been written over.
TEST(YuvToRgb, PixelsOverTheirOwnLuma) {
  RandomSource random;
  constexpr int width = 100;
  std::vector<uint8_t> want(3 * width), chroma(width);
  for (uint8_t& y : want) y = random.byte();
  for (uint8_t& c : chroma) c = random.byte();
  std::vector<uint8_t> got = want;
  for (size_t x = 0; x < width; ++x) {
    const Rgb p = pixel_of(want[200 + x], chroma[x / 2 * 2], chroma[x / 2 * 2 + 1]);
    want[3 * x] = static_cast<uint8_t>(p.r);
    want[3 * x + 1] = static_cast<uint8_t>(p.g);
    want[3 * x + 2] = static_cast<uint8_t>(p.b);
  }
  YuvView yuv{got.data() + 200, chroma.data(), width, 1, width, width};
  RgbView rgb{got.data(), width, 1, 0};
  yuv422_2rgbnew(&yuv, &rgb);
  EXPECT_EQ(want, got);
}

TEST(YuvToRgb, UpperAndLowerPixelsOfABlockOverTheRowBelow) {
  RandomSource random;
  constexpr int width = 100;
  std::vector<uint8_t> want(6 * width), chroma(width);
  for (uint8_t& y : want) y = random.byte();
  for (uint8_t& c : chroma) c = random.byte();
  std::vector<uint8_t> got = want;
  for (size_t block = 0; block < width; block += 2) {
    for (const size_t row : {0, 1}) {
      for (size_t x = block; x < block + 2; ++x) {
        const Rgb p = pixel_of(want[300 + width * row + x], chroma[block], chroma[block + 1]);
        const size_t at = 3 * (width * row + x);
        want[at] = static_cast<uint8_t>(p.r);
        want[at + 1] = static_cast<uint8_t>(p.g);
        want[at + 2] = static_cast<uint8_t>(p.b);
      }
    }
  }
  YuvView yuv{got.data() + 300, chroma.data(), width, 2, width, width};
  RgbView rgb{got.data(), width, 2, 0};
  yuv420_2rgbnew(&yuv, &rgb);
  EXPECT_EQ(want, got);
}

TEST(YuvToRgb, ReadsPaddedYuvAndIgnoresTheRgbStride) {
  RandomSource random;
  const int width = 6, height = 4, luma_stride = 11, chroma_stride = 9;
  for (const int block_rows : {1, 2}) {
    YuvPlanes tight = random_yuv(random, width, height, block_rows);
    std::vector<uint8_t> luma(size_t(luma_stride) * height, 1), chroma(size_t(chroma_stride) * height, 1);
    for (int y = 0; y < height; ++y) std::memcpy(&luma[size_t(y * luma_stride)], &tight.luma[size_t(y * width)], width);
    for (int y = 0; y < height / block_rows; ++y) {
      std::memcpy(&chroma[size_t(y * chroma_stride)], &tight.chroma[size_t(y * width)], width);
    }
    YuvView yuv{luma.data(), chroma.data(), width, height, luma_stride, chroma_stride};
    std::vector<int32_t> out(3 * width * height);
    RgbView rgb{out.data(), width, height, 1000};
    (block_rows == 2 ? yuv420_2rgb : yuv422_2rgb)(&yuv, &rgb);
    EXPECT_EQ(naive_to_rgb<int32_t>(tight.luma, tight.chroma, width, height, block_rows, 0), out);
  }
}

TEST(YuvToRgb, OverwritesTheRgbViewOnly) {
  YuvPlanes planes{std::vector<uint8_t>(8 * 6), std::vector<uint8_t>(8 * 6)};
  for (auto convert : {yuv420_2rgb, yuv422_2rgb, yuv420_2rgbnew, yuv422_2rgbnew}) {
    YuvView yuv{planes.luma.data(), planes.chroma.data(), 8, 6, 8, 8};
    std::vector<int32_t> out(3 * 8 * 6);
    RgbView rgb{out.data(), 4, 2, 5};
    convert(&yuv, &rgb);
    EXPECT_EQ(8, rgb.width);
    EXPECT_EQ(6, rgb.height);
    EXPECT_EQ(24, rgb.stride);
    EXPECT_EQ(8, yuv.width);
    EXPECT_EQ(8, yuv.luma_stride);
  }
}

// Rows and columns are the RGB view's, the row distance is the YUV width's.
TEST(YuvToRgb, SmallerRgbViewIsTheCornerOfAnImageAsWideAsTheYuv) {
  RandomSource random;
  YuvPlanes planes = random_yuv(random, 8, 6, 2);
  YuvView yuv = view_of(planes, 8, 6);
  const std::vector<int32_t> whole = naive_to_rgb<int32_t>(planes.luma, planes.chroma, 8, 6, 2, 0);
  std::vector<int32_t> out(whole.size(), -5), want(whole.size(), -5);
  for (int y = 0; y < 2; ++y) std::memcpy(&want[size_t(24 * y)], &whole[size_t(24 * y)], 12 * sizeof(int32_t));
  RgbView rgb{out.data(), 4, 2, 12};
  yuv420_2rgb(&yuv, &rgb);
  EXPECT_EQ(want, out);
}

// Columns past the YUV width land in the next RGB row; what is past the YUV planes is not read: no matter what lies there, the
// result is the same.
TEST(YuvToRgb, LargerRgbViewReadsNothingPastTheYuvPlanes) {
  RandomSource random;
  for (const auto& [width, height] : {std::pair{10, 2}, {4, 8}, {12, 9}, {7, 5}}) {
    for (const int block_rows : {1, 2}) {
      const YuvPlanes exact = random_yuv(random, 4, 2, block_rows);
      std::vector<int32_t> results[3];
      for (const int behind : {-1, 0, 255}) {
        YuvPlanes planes = exact;  // -1: exact size, for the address sanitizer
        if (behind >= 0) {
          planes.luma.resize(512, static_cast<uint8_t>(behind));
          planes.chroma.resize(512, static_cast<uint8_t>(behind));
        }
        YuvView yuv = view_of(planes, 4, 2);
        GuardedBlock<int32_t> out(size_t(3 * width * height));
        RgbView rgb{out.data(), width, height, 3 * width};
        (block_rows == 2 ? yuv420_2rgb : yuv422_2rgb)(&yuv, &rgb);
        results[behind < 0 ? 0 : behind == 0 ? 1 : 2] = out.values();
      }
      EXPECT_EQ(results[0], results[1]);
      EXPECT_EQ(results[0], results[2]);
      const Rgb first = pixel_of(exact.luma[0], exact.chroma[0], exact.chroma[1]);
      EXPECT_EQ(first.r, results[0][0]);
    }
  }
}

}  // namespace
}  // namespace biseam::test
