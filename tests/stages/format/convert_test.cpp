#include "stages/format/convert.hpp"

#include <gtest/gtest.h>
#include <pthread.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <vector>

#include "base/records.hpp"
#include "biseam/biseam.h"
#include "support/guarded_block.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

// ---- The formulas once more, pixel by pixel --------------------------------------------------------------------------

int rounded(double value) {
  const float single = static_cast<float>(value);
  const int whole = static_cast<int>(single + 0.5);
  return whole < 0 ? 0 : whole > 255 ? 255 : whole;
}

struct Rgb {
  int r, g, b;
};

Rgb pixel_of(int y, int u, int v) {
  const double red = 1.402 * (v - 128), green_u = 0.3441 * (u - 128), green_v = 0.7141 * (v - 128), blue = 1.772 * (u - 128);
  return {rounded(y + red), rounded(y - green_u - green_v), rounded(y + blue)};
}

int luma_of(int r, int g, int b) { return rounded(0.299 * r + 0.587 * g + 0.114 * b); }

// Tightly packed YUV to RGB as the pair loops go, four (or two) pixels a block; what has no place in its plane is left out.
template <class Sample>
std::vector<Sample> naive_to_rgb(const std::vector<uint8_t>& luma, const std::vector<uint8_t>& chroma, int width, int height,
                                 int block_rows, Sample poison) {
  std::vector<Sample> out(size_t(width) * size_t(height) * 3, poison);
  const auto chroma_at = [&](size_t i) {
    while (i >= chroma.size()) {
      if (i < 2) return 128;
      i -= 2;
    }
    return int{chroma[i]};
  };
  for (int y = 0; y < height; y += block_rows) {
    for (int x = 0; x < width; x += 2) {
      const size_t pair = size_t(x + width * (y / block_rows));
      const int u = chroma_at(pair), v = chroma_at(pair + 1);
      for (int dy = 0; dy < block_rows; ++dy) {
        for (int dx = 0; dx < 2; ++dx) {
          const size_t at = size_t(x + dx + width * (y + dy));
          if (at >= luma.size()) continue;
          const Rgb p = pixel_of(luma[at], u, v);
          out[3 * at] = static_cast<Sample>(p.r);
          out[3 * at + 1] = static_cast<Sample>(p.g);
          out[3 * at + 2] = static_cast<Sample>(p.b);
        }
      }
    }
  }
  return out;
}

struct YuvPlanes {
  std::vector<uint8_t> luma, chroma;
  bool operator==(const YuvPlanes&) const = default;
};

size_t chroma_bytes(int width, int height, int block_rows) { return size_t(width) * size_t(height) / size_t(block_rows); }

// Tightly packed RGB to YUV in the same manner: luma pixels x and x + 1 with each block, the block's second row in a second
// pass.
YuvPlanes naive_to_yuv(const std::vector<int32_t>& rgb, int width, int height, int block_rows, uint8_t poison) {
  YuvPlanes out{std::vector<uint8_t>(size_t(width) * size_t(height), poison),
                std::vector<uint8_t>(chroma_bytes(width, height, block_rows), poison)};
  const auto pixel = [&](int x, int y) {
    for (;; --y) {
      if (size_t(x + width * y) < out.luma.size()) return &rgb[3 * size_t(x + width * y)];
      if (x >= width && size_t(x - 1 + width * y) < out.luma.size()) return &rgb[3 * size_t(x - 1 + width * y)];
    }
  };
  const auto put_luma = [&](int x, int y) {
    const size_t at = size_t(x + width * y);
    if (at >= out.luma.size()) return;
    const int32_t* p = &rgb[3 * at];
    out.luma[at] = static_cast<uint8_t>(luma_of(p[0] >> 6, p[1] >> 6, p[2] >> 6));
  };
  for (int y = 0; y < height; y += block_rows) {
    for (int x = 0; x < width; x += 2) {
      put_luma(x, y);
      put_luma(x + 1, y);
      float mean[3];
      for (int c = 0; c < 3; ++c) {
        uint32_t sum = 0;
        for (int dy = 0; dy < block_rows; ++dy) {
          for (int dx = 0; dx < 2; ++dx) sum += static_cast<uint32_t>(pixel(x + dx, y + dy)[c]);
        }
        mean[c] = static_cast<float>(static_cast<int32_t>(sum) >> 6) * (block_rows == 2 ? 0.25f : 0.5f);
      }
      const double r = mean[0], g = mean[1], b = mean[2];
      const size_t at = size_t(x + width * (y / block_rows));
      if (at < out.chroma.size()) out.chroma[at] = static_cast<uint8_t>(rounded(-0.1687 * r - 0.3313 * g + 0.5 * b + 128.0));
      if (at + 1 < out.chroma.size()) {
        out.chroma[at + 1] = static_cast<uint8_t>(rounded(0.5 * r - 0.4187 * g - 0.0813 * b + 128.0));
      }
    }
    if (block_rows == 2) {
      for (int x = 0; x < width; ++x) put_luma(x, y + 1);
    }
  }
  return out;
}

// ---- Images of exact size ----------------------------------------------------------------------------------------------

YuvPlanes random_yuv(RandomSource& random, int width, int height, int block_rows) {
  YuvPlanes planes{std::vector<uint8_t>(size_t(width) * size_t(height)),
                   std::vector<uint8_t>(chroma_bytes(width, height, block_rows))};
  for (uint8_t& y : planes.luma) y = random.byte();
  for (uint8_t& c : planes.chroma) c = random.byte();
  return planes;
}

YuvView view_of(YuvPlanes& planes, int width, int height) {
  return {planes.luma.data(), planes.chroma.data(), width, height, width, width};
}

std::vector<int32_t> random_rgb(RandomSource& random, int width, int height, bool any_value) {
  std::vector<int32_t> rgb(3 * size_t(width) * size_t(height));
  for (int32_t& s : rgb) s = any_value ? static_cast<int32_t>(random.word()) : random.between(-2000, 64 * 255 + 4000);
  return rgb;
}

ImageHeader header_of(YuvPlanes& planes, int width, int height, int format) {
  ImageHeader image{};
  image.width = width;
  image.height = height;
  image.planes[0] = planes.luma.data();
  image.planes[1] = planes.chroma.data();
  image.strides[0] = image.strides[1] = width;
  image.format = format;
  return image;
}

BlendImage blend_image_of(int32_t* samples, int width, int height) {
  BlendImage image{};
  image.data[0] = samples;
  describe_blend_image(image, width, height);
  return image;
}

Rgb convert_one_pixel(uint8_t y, uint8_t u, uint8_t v) {
  uint8_t luma[2] = {y, y}, chroma[2] = {u, v};
  int32_t out[6] = {};
  YuvView yuv{luma, chroma, 2, 1, 2, 2};
  RgbView rgb{out, 2, 1, 6};
  yuv422_2rgb(&yuv, &rgb);
  return {out[0], out[1], out[2]};
}

// ---- Values ------------------------------------------------------------------------------------------------------------

TEST(ConvertValues, FullLumaWithNeutralChromaIsWhite) {
  const Rgb p = convert_one_pixel(255, 128, 128);
  EXPECT_EQ(255, p.r);
  EXPECT_EQ(255, p.g);
  EXPECT_EQ(255, p.b);
}

TEST(ConvertValues, FullVOverBlackGivesRed178) { EXPECT_EQ(178, convert_one_pixel(0, 128, 255).r); }

TEST(ConvertValues, NegativeIntermediatesClampToZero) {
  EXPECT_EQ(0, convert_one_pixel(0, 128, 0).r);
  EXPECT_EQ(0, convert_one_pixel(0, 129, 128).g);  // -0.3441
  EXPECT_EQ(0, convert_one_pixel(0, 128, 129).g);  // -0.7141 truncates toward zero after the half is added
  EXPECT_EQ(255, convert_one_pixel(255, 255, 255).r);
}

TEST(ConvertValues, SixFractionalBitsAreDroppedForLuma) {
  const int32_t sample = 64 * 200 + 63;
  int32_t in[6] = {sample, sample, sample, sample, sample, sample};
  uint8_t luma[2], chroma[2];
  YuvView yuv{luma, chroma, 0, 0, 0, 0};
  RgbView rgb{in, 2, 1, 6};
  rgb2yuv422(&yuv, &rgb);
  EXPECT_EQ(200, luma[0]);
  EXPECT_EQ(200, luma[1]);
}

TEST(ConvertValues, NegativeSamplesShiftWithTheirSign) {
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
TEST(ConvertValues, BlockSumIsShiftedBeforeItIsAveraged) {
  std::vector<int32_t> in;
  for (int i = 0; i < 4; ++i) in.insert(in.end(), {64 * 20 + 63, 128, 0});
  uint8_t luma[4], chroma[2];
  YuvView yuv{luma, chroma, 0, 0, 0, 0};
  RgbView rgb{in.data(), 2, 2, 6};
  rgb2yuv420(&yuv, &rgb);
  EXPECT_EQ(138, chroma[1]);
}

TEST(ConvertValues, EveryLumaWithManyChromaPairs) {
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

// ---- Whole images against the plain loops ------------------------------------------------------------------------------

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

TEST(ConvertImages, EvenSizesEqualThePlainLoops) {
  RandomSource random;
  for (int run = 0; run < 40; ++run) {
    const int width = 2 * random.between(1, 24), height = 2 * random.between(1, 12);
    expect_rgb_like_plain_loops<int32_t>(random, yuv420_2rgb, width, height, 2);
    expect_rgb_like_plain_loops<int32_t>(random, yuv422_2rgb, width, height, 1);
    expect_rgb_like_plain_loops<uint8_t>(random, yuv420_2rgbnew, width, height, 2);
    expect_rgb_like_plain_loops<uint8_t>(random, yuv422_2rgbnew, width, height, 1);
    expect_yuv_like_plain_loops(random, rgb2yuv420, width, height, 2, false);
    expect_yuv_like_plain_loops(random, rgb2yuv422, width, height, 1, false);
  }
}

TEST(ConvertImages, AnySampleValueWrapsInsteadOfOverflowing) {
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

// Odd sizes: column x + 1 and row y + 1 of the last block are touched inside the planes only.
TEST(ConvertImages, OddWidthsAndHeightsStayInsideThePlanes) {
  RandomSource random;
  for (int width = 1; width <= 9; ++width) {
    for (int height = 1; height <= 7; ++height) {
      expect_rgb_like_plain_loops<int32_t>(random, yuv420_2rgb, width, height, 2);
      expect_rgb_like_plain_loops<int32_t>(random, yuv422_2rgb, width, height, 1);
      expect_rgb_like_plain_loops<uint8_t>(random, yuv420_2rgbnew, width, height, 2);
      expect_rgb_like_plain_loops<uint8_t>(random, yuv422_2rgbnew, width, height, 1);
      expect_yuv_like_plain_loops(random, rgb2yuv420, width, height, 2, false);
      expect_yuv_like_plain_loops(random, rgb2yuv422, width, height, 1, false);
    }
  }
}

// With an odd width the last block's right column is the next row's first pixel, which keeps that block's chroma in the lower
// row.
TEST(ConvertImages, OddWidthTouchesTheNextRowsFirstPixel) {
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

TEST(ConvertImages, EmptyImagesAreLeftAlone) {
  GuardedBlock<int32_t> rgb_samples(12);
  GuardedBlock<uint8_t> luma(4), chroma(4);
  for (const auto& [width, height] : {std::pair{0, 4}, {4, 0}, {0, 0}, {-2, 4}, {4, -2}}) {
    YuvView yuv{luma.data(), chroma.data(), width, height, width, width};
    RgbView rgb{rgb_samples.data(), width, height, 3 * width};
    yuv420_2rgb(&yuv, &rgb);
    rgb = {rgb_samples.data(), width, height, 3 * width};
    yuv422_2rgbnew(&yuv, &rgb);
    rgb = {rgb_samples.data(), width, height, 3 * width};
    rgb2yuv420(&yuv, &rgb);
    rgb2yuv422(&yuv, &rgb);
  }
  EXPECT_EQ(GuardedBlock<int32_t>(12).values(), rgb_samples.values());
  EXPECT_EQ(GuardedBlock<uint8_t>(4).values(), luma.values());
  EXPECT_EQ(GuardedBlock<uint8_t>(4).values(), chroma.values());
}

// ---- Pixels over their own bytes ---------------------------------------------------------------------------------------

// Pixel by pixel, luma before chroma, whatever has been written over.
TEST(ConvertOverlaps, PixelsOverTheirOwnLuma) {
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

TEST(ConvertOverlaps, UpperAndLowerPixelsOfABlockOverTheRowBelow) {
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

TEST(ConvertOverlaps, LumaAndChromaOverTheirOwnPixels) {
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

// ---- Views and strides -------------------------------------------------------------------------------------------------

TEST(ConvertViews, YuvToRgbReadsPaddedYuvAndIgnoresTheRgbStride) {
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

TEST(ConvertViews, YuvToRgbOverwritesTheRgbViewOnly) {
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
TEST(ConvertViews, SmallerRgbViewIsTheCornerOfAnImageAsWideAsTheYuv) {
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
TEST(ConvertViews, LargerRgbViewReadsNothingPastTheYuvPlanes) {
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

TEST(ConvertViews, RgbToYuvTakesSizeAndStrideFromTheRgbView) {
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

// ---- Dispatch ----------------------------------------------------------------------------------------------------------

TEST(ConvertDispatch, RgbToYuvCodes) {
  RandomSource random;
  std::vector<int32_t> in = random_rgb(random, 6, 4, false);
  BlendImage source = blend_image_of(in.data(), 6, 4);
  for (const int block_rows : {1, 2}) {
    YuvPlanes out{std::vector<uint8_t>(24), std::vector<uint8_t>(chroma_bytes(6, 4, block_rows))};
    ImageHeader destination = header_of(out, 6, 4, block_rows == 2 ? 0 : 4);
    const ImageHeader before = destination;
    EXPECT_EQ(0, cvt_image_format(&source, &destination, block_rows == 2 ? 0x70 : 0x74));
    EXPECT_EQ(naive_to_yuv(in, 6, 4, block_rows, 0), out);
    EXPECT_EQ(0, std::memcmp(&before, &destination, sizeof before));
  }
}

TEST(ConvertDispatch, YuvToIntegerRgbCodes) {
  RandomSource random;
  for (const int block_rows : {1, 2}) {
    YuvPlanes planes = random_yuv(random, 6, 4, block_rows);
    ImageHeader source = header_of(planes, 6, 4, 0);
    std::vector<int32_t> out(72);
    BlendImage destination = blend_image_of(out.data(), 6, 4);
    EXPECT_EQ(0, cvt_image_format(&source, &destination, block_rows == 2 ? 0x07 : 0x47));
    EXPECT_EQ(naive_to_rgb<int32_t>(planes.luma, planes.chroma, 6, 4, block_rows, 0), out);
  }
}

TEST(ConvertDispatch, ByteRgbCodesAndEveryUnknownCode) {
  RandomSource random;
  for (const int code : {1, 0, 0x17, 0x57, 0x71, 0x75, 0x27, 8, 255, -1, INT_MIN, 0x70 + 256}) {
    const int block_rows = code == 1 ? 2 : 1;
    YuvPlanes planes = random_yuv(random, 6, 4, 1);
    ImageHeader source = header_of(planes, 6, 4, 4);
    std::vector<uint8_t> out(72);
    ImageHeader destination{};
    destination.width = 6;
    destination.height = 4;
    destination.planes[0] = out.data();
    destination.strides[0] = 18;
    EXPECT_EQ(0, cvt_image_format(&source, &destination, code));
    EXPECT_EQ(naive_to_rgb<uint8_t>(planes.luma, planes.chroma, 6, 4, block_rows, 0), out) << code;
  }
}

TEST(ConvertDispatch, RecordsAreNotChanged) {
  YuvPlanes planes{std::vector<uint8_t>(24), std::vector<uint8_t>(24)};
  ImageHeader yuv = header_of(planes, 6, 4, 0);
  yuv.strides[0] = 5;  // anything the converters would overwrite in a view
  std::vector<int32_t> samples(72);
  BlendImage rgb = blend_image_of(samples.data(), 6, 2);
  const ImageHeader yuv_before = yuv;
  const BlendImage rgb_before = rgb;
  for (const int code : {0x70, 0x74}) cvt_image_format(&rgb, &yuv, code);
  for (const int code : {0x07, 0x47}) cvt_image_format(&yuv, &rgb, code);
  EXPECT_EQ(0, std::memcmp(&yuv_before, &yuv, sizeof yuv));
  EXPECT_EQ(0, std::memcmp(&rgb_before, &rgb, sizeof rgb));
}

TEST(ConvertDispatch, PlaneTwoStepsAndFormatAreNotLookedAt) {
  RandomSource random;
  YuvPlanes planes = random_yuv(random, 4, 2, 2);
  ImageHeader source = header_of(planes, 4, 2, 1);  // pairs are U, V all the same
  source.planes[2] = reinterpret_cast<uint8_t*>(1);
  for (int& step : source.steps) step = -7;
  source.strides[2] = 1 << 30;
  std::vector<int32_t> out(24);
  BlendImage destination = blend_image_of(out.data(), 4, 2);
  cvt_image_format(&source, &destination, 7);
  EXPECT_EQ(naive_to_rgb<int32_t>(planes.luma, planes.chroma, 4, 2, 2, 0), out);
}

TEST(ConvertDispatch, FourThreadsConvertFourImages) {
  RandomSource random;
  YuvPlanes planes[4];
  ImageHeader sources[4];
  std::vector<int32_t> out[4];
  BlendImage destinations[4];
  ConversionArgs args[4];
  pthread_t threads[4];
  for (int k = 0; k < 4; ++k) {
    planes[k] = random_yuv(random, 32, 16, 2);
    sources[k] = header_of(planes[k], 32, 16, 0);
    out[k].resize(3 * 32 * 16);
    destinations[k] = blend_image_of(out[k].data(), 32, 16);
    args[k] = {&sources[k], &destinations[k], 7};
    ASSERT_EQ(0, pthread_create(&threads[k], nullptr, cvt_image_format_pth, &args[k]));
  }
  for (int k = 0; k < 4; ++k) {
    void* result = &args[k];
    pthread_join(threads[k], &result);
    EXPECT_EQ(nullptr, result);
    EXPECT_EQ(naive_to_rgb<int32_t>(planes[k].luma, planes[k].chroma, 32, 16, 2, 0), out[k]);
  }
}

}  // namespace
}  // namespace biseam::test
