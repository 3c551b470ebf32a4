#include "stages/compose/composition.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <vector>

#include "biseam/biseam.h"
#include "support/guarded_block.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

using Bytes = std::vector<uint8_t>;

Bytes random_bytes(RandomSource& random, size_t count) {
  Bytes out(count);
  for (uint8_t& b : out) b = random.byte();
  return out;
}

// ---- ImageCopy ---------------------------------------------------------------------------------------------------------

TEST(ImageCopy, CopiesARectangleOfUnits) {
  RandomSource random;
  for (int run = 0; run < 200; ++run) {
    const int unit = random.between(1, 3), columns = random.between(0, 9), rows = random.between(0, 6);
    const int src_x = random.between(0, 5), dst_x = random.between(0, 5);
    const int src_stride = unit * (src_x + columns) + random.between(0, 4);
    const int dst_stride = unit * (dst_x + columns) + random.between(0, 4);
    const Bytes src = random_bytes(random, size_t(src_stride * rows));
    GuardedBlock<uint8_t> dst(size_t(dst_stride * rows));
    Bytes want = dst.values();
    for (int r = 0; r < rows; ++r) {
      for (int b = 0; b < columns * unit; ++b) {
        want[size_t(r * dst_stride + unit * dst_x + b)] = src[size_t(r * src_stride + unit * src_x + b)];
      }
    }
    ImageCopy(src.data(), columns, rows, src_stride, uint32_t(src_x), dst.data(), dst_stride, unit, dst_x);
    ASSERT_EQ(want, dst.values());
  }
}

TEST(ImageCopy, NoRowsOrColumnsWriteNothing) {
  const Bytes src(64, 1);
  GuardedBlock<uint8_t> dst(64);
  const Bytes before = dst.values();
  for (const auto& [columns, rows] : {std::pair{4, 0}, {4, -1}, {0, 4}, {-1, 4}, {-3, -3}}) {
    ImageCopy(src.data(), columns, rows, 8, 0, dst.data(), 8, 2, 0);
    EXPECT_EQ(before, dst.values());
    ImageCopy(src.data(), columns, rows, 8, 0, dst.data() + 32, 8, -2, 0);
    EXPECT_EQ(before, dst.values());
  }
}

TEST(ImageCopy, NegativeStridesWalkUpwards) {
  const Bytes src = {1, 2, 3, 4, 5, 6};
  GuardedBlock<uint8_t> dst(6);
  ImageCopy(src.data(), 2, 3, 2, 0, dst.data() + 4, -2, 1, 0);
  EXPECT_EQ((Bytes{5, 6, 3, 4, 1, 2}), dst.values());
}

TEST(ImageCopy, NegativeDestinationColumnCountsBackwards) {
  const Bytes src = {1, 2, 3, 4};
  GuardedBlock<uint8_t> dst(8, 0);
  ImageCopy(src.data(), 2, 2, 2, 0, dst.data() + 4, 2, 1, -1);
  EXPECT_EQ((Bytes{0, 0, 0, 1, 2, 3, 4, 0})[3], dst[3]);
  EXPECT_EQ((Bytes{0, 0, 0, 1, 2, 3, 4, 0}), dst.values());
}

// ---- BlendPanoWithBiFisheye --------------------------------------------------------------------------------------------

TEST(BlendPano, SecondStripLiesBehindTheGapAndItsOwnOffset) {
  Bytes strip0 = {1, 2, 3, 4}, strip1 = {5, 6, 7, 8, 9, 10, 11, 12};
  uint8_t* const sources[2] = {strip0.data(), strip1.data()};
  const int32_t widths[2] = {2, 3}, strides[2] = {2, 4}, offsets[2] = {1, 2};
  for (const int ignored : {0, -5, 1000}) {
    GuardedBlock<uint8_t> dst(24, 0);
    BlendPanoWithBiFisheye(sources, widths, 2, strides, dst.data(), offsets, ignored, ignored, 12, 1, 3);
    EXPECT_EQ((Bytes{0, 1, 2, 0, 0, 0, 5, 6, 7, 0, 0, 0, 0, 3, 4, 0, 0, 0, 9, 10, 11, 0, 0, 0}), dst.values());
  }
}

TEST(BlendPano, UnitsScaleWidthsAndOffsets) {
  Bytes strip0 = {1, 2}, strip1 = {3, 4, 5, 6};
  uint8_t* const sources[2] = {strip0.data(), strip1.data()};
  const int32_t widths[2] = {1, 2}, strides[2] = {2, 4}, offsets[2] = {1, 0};
  GuardedBlock<uint8_t> dst(12, 0);
  BlendPanoWithBiFisheye(sources, widths, 1, strides, dst.data(), offsets, 0, 0, 12, 2, 2);
  EXPECT_EQ((Bytes{0, 0, 1, 2, 0, 0, 3, 4, 5, 6, 0, 0}), dst.values());
}

TEST(BlendPano, WhereStripsOverlapTheSecondOneStays) {
  Bytes strip0 = {1, 1, 1}, strip1 = {2, 2};
  uint8_t* const sources[2] = {strip0.data(), strip1.data()};
  const int32_t widths[2] = {3, 2}, strides[2] = {3, 2}, offsets[2] = {0, 0};
  GuardedBlock<uint8_t> dst(4, 0);
  BlendPanoWithBiFisheye(sources, widths, 1, strides, dst.data(), offsets, 0, 0, 4, 1, 1);
  EXPECT_EQ((Bytes{1, 2, 2, 0}), dst.values());
}

// ---- StitchingBiFisheyePano --------------------------------------------------------------------------------------------

struct Planes {
  Planes(int luma_bytes, int chroma_bytes, uint8_t value)
      : luma(size_t(luma_bytes), value), chroma(size_t(chroma_bytes), value) {}
  ImageHeader header(int width, int height, int stride0, int stride1, int format) {
    ImageHeader h{};
    h.width = width;
    h.height = height;
    h.planes[0] = luma.data();
    h.planes[1] = chroma.data();
    h.strides[0] = stride0;
    h.strides[1] = h.strides[2] = stride1;
    h.format = format;
    return h;
  }
  Bytes luma, chroma;
};

struct Composition {
  int left_inner, middle_inner, right_inner, gap, width, height, format;
};

// A panorama of zeros after strips of ones and twos were placed; chroma of full height.
Planes composed(const Composition& c) {
  Planes strip0(c.gap * c.height, c.gap * c.height, 1), strip1(c.gap * c.height, c.gap * c.height, 2);
  ImageHeader h0 = strip0.header(c.gap, c.height, c.gap, c.gap, c.format);
  ImageHeader h1 = strip1.header(c.gap, c.height, c.gap, c.gap, c.format);
  Planes pano(c.width * c.height, c.width * c.height, 0);
  ImageHeader out = pano.header(c.width, c.height, c.width, c.width, c.format);
  StitchingBiFisheyePano(&h0, &h1, &out, c.left_inner, c.middle_inner, c.right_inner, c.gap, -1, -1, c.format);
  return pano;
}

void expect_columns(const Bytes& plane, int stride, int rows, int height, int first0, int first1, int bytes) {
  const Bytes empty(size_t(stride), 0);
  Bytes strips = empty;
  std::fill_n(strips.begin() + first0, bytes, uint8_t{1});
  std::fill_n(strips.begin() + first1, bytes, uint8_t{2});
  for (int y = 0; y < height; ++y) {
    const auto row = plane.begin() + ptrdiff_t{y} * stride;
    ASSERT_EQ(y < rows ? strips : empty, Bytes(row, row + stride)) << y;
  }
}

// W 1920, feather 16, transition 32.
TEST(StitchingPano, StripsOfA1920WidePanoramaStartAt432And1392) {
  const Composition c = {432, 864, 432, 96, 1920, 4, 0};
  const Planes pano = composed(c);
  expect_columns(pano.luma, 1920, 4, 4, 432, 1392, 96);
  expect_columns(pano.chroma, 1920, 2, 4, 2 * 216, 2 * 696, 96);
}

TEST(StitchingPano, OnlyFormat0HalvesTheChromaRows) {
  for (const int format : {0, 1, 2, 3, 4, 5, 6, 7, -1}) {
    SCOPED_TRACE(format);
    const Planes pano = composed({432, 864, 432, 96, 1920, 960, format});
    expect_columns(pano.luma, 1920, 960, 960, 432, 1392, 96);
    expect_columns(pano.chroma, 1920, format == 0 ? 480 : 960, 960, 432, 1392, 96);
  }
}

TEST(StitchingPano, OddLeftInnerPutsChromaOneColumnToTheLeft) {
  const Planes pano = composed({433, 864, 431, 96, 1920, 2, 4});
  expect_columns(pano.luma, 1920, 2, 2, 433, 433 + 96 + 864, 96);
  expect_columns(pano.chroma, 1920, 2, 2, 2 * 216, 2 * (216 + 48 + 432), 96);
}

TEST(StitchingPano, OddMiddleInnerGapAndWidthAreHalvedTowardZero) {
  const Planes pano = composed({11, 21, 5, 9, 60, 2, 4});
  expect_columns(pano.luma, 60, 2, 2, 11, 41, 9);
  expect_columns(pano.chroma, 60, 2, 2, 2 * 5, 2 * (5 + 4 + 10), 8);
}

TEST(StitchingPano, OddHeightHalvesTowardZero) {
  const Planes pano = composed({12, 20, 8, 8, 60, 5, 0});
  expect_columns(pano.chroma, 60, 2, 5, 12, 40, 8);
}

TEST(StitchingPano, RowsOfTheFirstStripCountForBothAndNoneWriteNothing) {
  for (const int height : {0, -1, -7}) {
    Planes strip(64, 64, 1);
    ImageHeader h = strip.header(8, height, 8, 8, 4);
    GuardedBlock<uint8_t> luma(64), chroma(64);
    ImageHeader out = h;
    out.planes[0] = luma.data();
    out.planes[1] = chroma.data();
    StitchingBiFisheyePano(&h, &h, &out, 0, 8, 0, 8, 0, 0, 4);
    EXPECT_EQ(GuardedBlock<uint8_t>(64).values(), luma.values());
    EXPECT_EQ(GuardedBlock<uint8_t>(64).values(), chroma.values());
  }
}

TEST(StitchingPano, StridesOfStripsAndPanoramaAreTheirOwn) {
  Planes strip0(3 * 7, 3 * 9, 1), strip1(3 * 11, 3 * 13, 2), pano(3 * 40, 3 * 44, 0);
  ImageHeader h0 = strip0.header(6, 3, 7, 9, 4), h1 = strip1.header(6, 99, 11, 13, 4), out = pano.header(36, 3, 40, 44, 4);
  StitchingBiFisheyePano(&h0, &h1, &out, 4, 10, 4, 6, 0, 0, 4);
  expect_columns(pano.luma, 40, 3, 3, 4, 20, 6);
  expect_columns(pano.chroma, 44, 3, 3, 4, 20, 6);
}

}  // namespace
}  // namespace biseam::test
