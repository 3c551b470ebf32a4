#include "stages/lens/flip.hpp"

#include <gtest/gtest.h>

#include "biseam/biseam.h"
#include "support/guarded.hpp"

namespace biseam::test {
namespace {

template <class Element>
using Exchange = void (*)(Element*, int32_t, int32_t, int32_t);

// Runs an exchange over random rows and compares every element, the ones between the rows included.  moved(x, y, w, h): the
// index pair that (x, y) comes from.
template <class Element, class Moved>
void check_exchange(Exchange<Element> exchange, Moved moved, unsigned seed) {
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  Random random(seed);
  for (int round = 0; round < 300; ++round) {
    const int width = pick(random, 0, 70), stride = width + pick(random, 0, 5), height = pick(random, 0, 9);
    Guarded<Element> block(stride * height);
    for (int i = 0; i < stride * height; ++i) block.data()[i] = static_cast<Element>(random());
    const std::vector<Element> before(block.data(), block.data() + stride * height);
    exchange(block.data(), width, stride, height);
    ASSERT_TRUE(block.guards_intact());
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < stride; ++x) {
        const auto [from_x, from_y] = x < width ? moved(x, y, width, height) : std::pair{x, y};
        ASSERT_EQ(block.data()[y * stride + x], before[from_y * stride + from_x])
            << width << " x " << height << " stride " << stride << " at " << x << ", " << y;
      }
    }
  }
}

std::pair<int, int> flipped(int x, int y, int, int height) { return {x, height - 1 - y}; }
std::pair<int, int> mirrored(int x, int y, int width, int) { return {width - 1 - x, y}; }

TEST(FlipMtrx, ExchangesRowsOfAnySize) { check_exchange<uint8_t>(flip_mtrx, flipped, 20701); }
TEST(FlipMtrxUn, ExchangesRowsOfAnySize) { check_exchange<uint16_t>(flip_mtrx_un, flipped, 20702); }
TEST(MirrorMtrx, ReversesRowsOfAnySize) { check_exchange<uint8_t>(mirror_mtrx, mirrored, 20703); }
TEST(MirrorMtrxUn, ReversesRowsOfAnySize) { check_exchange<uint16_t>(mirror_mtrx_un, mirrored, 20704); }

TEST(FlipMtrx, ThreeRowsKeepTheMiddleOne) {
  uint8_t plane[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
  const uint8_t expected[] = {9, 10, 11, 12, 5, 6, 7, 8, 1, 2, 3, 4};
  flip_mtrx(plane, 4, 4, 3);
  EXPECT_EQ(std::memcmp(plane, expected, sizeof plane), 0);
}

TEST(FlipMtrx, EmptySizesDoNothing) {
  uint8_t plane[] = {1, 2, 3, 4};
  const uint8_t before[] = {1, 2, 3, 4};
  flip_mtrx(plane, 0, 2, 2);
  flip_mtrx(plane, -3, 2, 2);
  flip_mtrx(plane, 2, 2, 1);
  flip_mtrx(plane, 2, 2, 0);
  flip_mtrx(plane, 2, 2, -2);
  EXPECT_EQ(std::memcmp(plane, before, sizeof plane), 0);
}

// Rows wider than their stride share elements: each exchange sees what the ones before it left.
TEST(FlipMtrx, RowsThatOverlapAreExchangedElementByElement) {
  for (const int stride : {0, 1, 31, 64, 99, 100}) {
    const int width = 100, height = 5;
    std::vector<uint8_t> want(stride * (height - 1) + width);
    Random random(20709);
    for (uint8_t& element : want) element = static_cast<uint8_t>(random());
    std::vector<uint8_t> got = want;
    for (int row = 0; row < height / 2; ++row) {
      for (int k = 0; k < width; ++k) std::swap(want[row * stride + k], want[(height - 1 - row) * stride + k]);
    }
    flip_mtrx(got.data(), width, stride, height);
    ASSERT_EQ(got, want) << stride;
  }
}

TEST(MirrorMtrx, EmptySizesDoNothing) {
  uint8_t plane[] = {1, 2, 3, 4};
  const uint8_t before[] = {1, 2, 3, 4};
  mirror_mtrx(plane, 1, 2, 2);
  mirror_mtrx(plane, 0, 2, 2);
  mirror_mtrx(plane, -1, 2, 2);
  mirror_mtrx(plane, 2, 2, 0);
  mirror_mtrx(plane, 2, 2, -1);
  EXPECT_EQ(std::memcmp(plane, before, sizeof plane), 0);
}

// Two planes at an odd address, so that chroma pairs aren't aligned, and a header over them.
struct Picture {
  Picture(int width, int height, int format, int luma_stride, int chroma_stride, unsigned seed)
      : luma(luma_stride * height + 1), chroma(chroma_stride * height + 1) {
    Random random(seed);
    for (std::size_t i = 0; i < luma.bytes(); ++i) luma.data()[i] = static_cast<uint8_t>(random());
    for (std::size_t i = 0; i < chroma.bytes(); ++i) chroma.data()[i] = static_cast<uint8_t>(random());
    header.width = width;
    header.height = height;
    header.format = format;
    header.planes[0] = luma.data() + 1;
    header.planes[1] = chroma.data() + 1;
    header.strides[0] = luma_stride;
    header.strides[1] = chroma_stride;
  }

  std::vector<uint8_t> bytes() {
    std::vector<uint8_t> all(luma.data(), luma.data() + luma.bytes());
    all.insert(all.end(), chroma.data(), chroma.data() + chroma.bytes());
    return all;
  }
  uint8_t luma_at(int x, int y) const { return header.planes[0][y * header.strides[0] + x]; }
  uint8_t chroma_at(int pair, int component, int y) const {
    return header.planes[1][y * (header.strides[1] / 2 * 2) + 2 * pair + component];
  }

  Guarded<uint8_t> luma, chroma;
  ImageHeader header{};
};

void check_picture(int width, int height, int format, bool mirror) {
  SCOPED_TRACE(testing::Message() << width << " x " << height << " format " << format << (mirror ? " mirror" : " flip"));
  const unsigned seed = 20705;
  const Picture before(width, height, format, width + 3, width + 5, seed);
  Picture picture(width, height, format, width + 3, width + 5, seed);
  mirror ? mirror_image(&picture.header) : flip_image(&picture.header);
  EXPECT_TRUE(picture.luma.guards_intact() && picture.chroma.guards_intact());
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width + 3; ++x) {
      const bool moves = x < width;
      const int from_x = moves && mirror ? width - 1 - x : x, from_y = moves && !mirror ? height - 1 - y : y;
      ASSERT_EQ(picture.luma_at(x, y), before.luma_at(from_x, from_y)) << x << ", " << y;
    }
  }
  const int rows = format < 4 ? height / 2 : height, pairs = width / 2;
  for (int y = 0; y < rows; ++y) {
    for (int pair = 0; pair < pairs; ++pair) {
      const int from_x = mirror ? pairs - 1 - pair : pair, from_y = mirror ? y : rows - 1 - y;
      ASSERT_EQ(picture.chroma_at(pair, 0, y), before.chroma_at(from_x, 0, from_y)) << pair << ", " << y;
      ASSERT_EQ(picture.chroma_at(pair, 1, y), before.chroma_at(from_x, 1, from_y)) << pair << ", " << y;
    }
  }
}

TEST(FlipImage, MovesLumaAndChromaOfSemiPlanarFormats) {
  for (const int format : {0, 1, 4, 5}) {
    for (const auto& [width, height] : {std::pair{8, 6}, {7, 5}, {33, 1}, {2, 9}, {1, 4}}) {
      check_picture(width, height, format, false);
    }
  }
}

TEST(MirrorImage, MovesLumaAndChromaOfSemiPlanarFormats) {
  for (const int format : {0, 1, 4, 5}) {
    for (const auto& [width, height] : {std::pair{8, 6}, {7, 5}, {33, 1}, {2, 9}, {1, 4}}) {
      check_picture(width, height, format, true);
    }
  }
}

TEST(MirrorImage, ChromaPairsKeepTheirInnerOrder) {
  uint8_t luma[12] = {}, chroma[] = {10, 20, 11, 21, 12, 22};
  const uint8_t expected[] = {12, 22, 11, 21, 10, 20};
  ImageHeader header{};
  header.width = 6;
  header.height = 2;
  header.planes[0] = luma;
  header.planes[1] = chroma;
  header.strides[0] = header.strides[1] = 6;
  mirror_image(&header);
  EXPECT_EQ(std::memcmp(chroma, expected, sizeof chroma), 0);
}

TEST(FlipImage, TwiceRestoresThePicture) {
  Picture picture(21, 7, 0, 24, 26, 20706);
  const std::vector<uint8_t> before = picture.bytes();
  flip_image(&picture.header);
  EXPECT_NE(picture.bytes(), before);
  flip_image(&picture.header);
  EXPECT_EQ(picture.bytes(), before);
}

TEST(MirrorImage, TwiceRestoresThePicture) {
  Picture picture(21, 7, 4, 24, 26, 20707);
  const std::vector<uint8_t> before = picture.bytes();
  mirror_image(&picture.header);
  EXPECT_NE(picture.bytes(), before);
  mirror_image(&picture.header);
  EXPECT_EQ(picture.bytes(), before);
}

// Packed RGB (7), planar (2, 6) and unknown codes.
TEST(FlipImage, RgbPlanarAndUnknownFormatsStayAsTheyAre) {
  for (const int format : {2, 3, 6, 7, 8, -1}) {
    Picture picture(20, 6, format, 20, 20, 20708);
    const std::vector<uint8_t> before = picture.bytes();
    flip_image(&picture.header);
    EXPECT_EQ(picture.bytes(), before) << format;
  }
}

TEST(MirrorImage, RgbPlanarAndUnknownFormatsStayAsTheyAre) {
  for (const int format : {2, 3, 6, 7, 8, -1}) {
    Picture picture(20, 6, format, 20, 20, 20708);
    const std::vector<uint8_t> before = picture.bytes();
    mirror_image(&picture.header);
    EXPECT_EQ(picture.bytes(), before) << format;
  }
}

}  // namespace
}  // namespace biseam::test
