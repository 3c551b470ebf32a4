#include "base/records.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>

#include "biseam/biseam.h"

namespace biseam::test {
namespace {

constexpr int kFormats[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, -1, 1000};

bool semi_planar(int format) { return format == 0 || format == 1 || format == 4 || format == 5; }
bool planar(int format) { return format == 2 || format == 6; }

uint8_t bytes[64];
int32_t samples[64];

// Every field distinct and unlike anything a builder writes.
ImageHeader marked_header() {
  ImageHeader h{};
  h.width = h.height = h.format = -1111;
  for (int p = 0; p < 3; ++p) {
    h.planes[p] = bytes + 40 + p;
    h.strides[p] = -2000 - p;
    h.steps[p] = -3000 - p;
  }
  return h;
}

void expect_planes(const ImageHeader& h, const uint8_t* p0, const uint8_t* p1, const uint8_t* p2) {
  EXPECT_EQ(p0, h.planes[0]);
  EXPECT_EQ(p1, h.planes[1]);
  EXPECT_EQ(p2, h.planes[2]);
}

void expect_strides(const ImageHeader& h, int s0, int s1, int s2) {
  EXPECT_EQ(s0, h.strides[0]);
  EXPECT_EQ(s1, h.strides[1]);
  EXPECT_EQ(s2, h.strides[2]);
}

void expect_steps(const ImageHeader& h, int s0, int s1, int s2) {
  EXPECT_EQ(s0, h.steps[0]);
  EXPECT_EQ(s1, h.steps[1]);
  EXPECT_EQ(s2, h.steps[2]);
}

// ---- init_image_header -------------------------------------------------------------------------------------------------

TEST(InitImageHeader, EveryFormat) {
  for (const int format : kFormats) {
    SCOPED_TRACE(format);
    ImageHeader h = marked_header();
    EXPECT_EQ(semi_planar(format) || planar(format) ? 0 : -1, init_image_header(&h, 30, 20, 32, 34, format));
    EXPECT_EQ(30, h.width);
    EXPECT_EQ(20, h.height);
    EXPECT_EQ(format, h.format);
    expect_planes(h, bytes + 40, bytes + 41, bytes + 42);
    if (semi_planar(format)) {
      expect_strides(h, 32, 34, 34);
      expect_steps(h, 1, 2, 2);
    } else if (planar(format)) {
      expect_strides(h, 32, 17, 17);
      expect_steps(h, 1, 1, 1);
    } else {
      expect_strides(h, -2000, -2001, -2002);
      expect_steps(h, -3000, -3001, -3002);
    }
  }
}

TEST(InitImageHeader, UnsupportedCodesAreReportedButStored) {
  for (const int format : {7, 3}) {
    ImageHeader h = marked_header();
    EXPECT_EQ(-1, init_image_header(&h, 8, 6, 8, 8, format));
    EXPECT_EQ(8, h.width);
    EXPECT_EQ(6, h.height);
    EXPECT_EQ(format, h.format);
  }
}

TEST(InitImageHeader, OddChromaStridesAreHalvedTowardZero) {
  for (const int format : {2, 6}) {
    ImageHeader h{};
    EXPECT_EQ(0, init_image_header(&h, 8, 6, 8, 9, format));
    expect_strides(h, 8, 4, 4);
    EXPECT_EQ(0, init_image_header(&h, 8, 6, 8, -9, format));
    expect_strides(h, 8, -4, -4);
  }
}

// ---- create_image_header -----------------------------------------------------------------------------------------------

TEST(CreateImageHeader, EveryFormat) {
  uint8_t* const planes[] = {bytes, bytes + 10, bytes + 20};
  const int32_t strides[] = {5, 7, 9};
  for (const int format : kFormats) {
    SCOPED_TRACE(format);
    ImageHeader h = marked_header();
    create_image_header(&h, planes, strides, 4, 3, format);
    EXPECT_EQ(4, h.width);
    EXPECT_EQ(3, h.height);
    EXPECT_EQ(format, h.format);
    if (format == 7) {
      expect_planes(h, bytes, bytes + 1, bytes + 2);
      expect_strides(h, 5, 5, 5);
      expect_steps(h, 3, 3, 3);
    } else if (semi_planar(format)) {
      expect_planes(h, bytes, bytes + 10, bytes + 11);
      expect_strides(h, 5, 7, 7);
      expect_steps(h, 1, 2, 2);
    } else if (planar(format)) {
      expect_planes(h, bytes, bytes + 10, bytes + 42);
      expect_strides(h, 5, 7, -2002);
      expect_steps(h, 1, 1, 1);
    } else {
      expect_planes(h, nullptr, nullptr, nullptr);
      expect_strides(h, 0, 0, 0);
      expect_steps(h, 0, 0, 0);
    }
  }
}

TEST(CreateImageHeader, PlanarFormatsLeavePlaneTwoAndItsStride) {
  uint8_t* const planes[] = {bytes, bytes + 10};  // two entries: the third is not read
  const int32_t strides[] = {5, 7};
  for (const int format : {2, 6}) {
    ImageHeader h{};
    h.planes[2] = bytes + 30;
    h.strides[2] = 33;
    create_image_header(&h, planes, strides, 4, 3, format);
    EXPECT_EQ(bytes + 30, h.planes[2]);
    EXPECT_EQ(33, h.strides[2]);
    EXPECT_EQ(1, h.steps[2]);
  }
}

TEST(CreateImageHeader, PackedRgbReadsOnePlaneOnly) {
  uint8_t* const planes[] = {bytes};
  const int32_t strides[] = {12};
  ImageHeader h{};
  create_image_header(&h, planes, strides, 4, 3, 7);
  expect_planes(h, bytes, bytes + 1, bytes + 2);
}

// ---- malloc_image_data, free_image_data --------------------------------------------------------------------------------

TEST(MallocImageData, EveryFormatIsLaidOutAndZero) {
  for (const int format : kFormats) {
    SCOPED_TRACE(format);
    ImageHeader h = marked_header();
    EXPECT_EQ(1, malloc_image_data(&h, 30, 5, 32, 34, format));
    EXPECT_EQ(30, h.width);
    EXPECT_EQ(5, h.height);
    EXPECT_EQ(format, h.format);
    if (!semi_planar(format) && !planar(format) && format != 7) {
      expect_planes(h, nullptr, nullptr, nullptr);
      expect_strides(h, 0, 0, 0);
      expect_steps(h, 0, 0, 0);
      continue;
    }
    ASSERT_NE(nullptr, h.planes[0]);
    for (int i = 0; i < 32 * 5; ++i) ASSERT_EQ(0, h.planes[0][i]);
    if (format == 7) {
      expect_planes(h, h.planes[0], h.planes[0] + 1, h.planes[0] + 2);
      expect_strides(h, 32, 32, 32);
      expect_steps(h, 3, 3, 3);
    } else if (semi_planar(format)) {
      const int chroma = format < 4 ? 34 * 5 / 2 : 34 * 5;
      ASSERT_NE(nullptr, h.planes[1]);
      for (int i = 0; i < chroma; ++i) ASSERT_EQ(0, h.planes[1][i]);
      EXPECT_EQ(h.planes[1] + 1, h.planes[2]);
      expect_strides(h, 32, 34, 34);
      expect_steps(h, 1, 2, 2);
    } else {
      const int chroma = format == 2 ? 34 * 5 / 4 : 34 * 5 / 2;
      for (int p = 1; p < 3; ++p) {
        ASSERT_NE(nullptr, h.planes[p]);
        for (int i = 0; i < chroma; ++i) ASSERT_EQ(0, h.planes[p][i]);
      }
      expect_strides(h, 32, 17, 17);
      expect_steps(h, 1, 1, 1);
    }
    free_image_data(&h);
    expect_planes(h, nullptr, nullptr, nullptr);
  }
}

TEST(MallocImageData, NegativeAndHugeSizesGiveNullPlanes) {
  for (const int format : {0, 2, 4, 6, 7}) {
    ImageHeader h{};
    EXPECT_EQ(1, malloc_image_data(&h, 8, -8, 8, 8, format));
    expect_planes(h, nullptr, nullptr, nullptr);
    EXPECT_EQ(1, malloc_image_data(&h, 8, INT32_MAX, INT32_MAX, INT32_MAX, format));
    expect_planes(h, nullptr, nullptr, nullptr);
  }
}

TEST(FreeImageData, UnknownCodesLeaveThePointers) {
  for (const int format : {3, 8, -1}) {
    ImageHeader h = marked_header();
    h.format = format;
    free_image_data(&h);
    expect_planes(h, bytes + 40, bytes + 41, bytes + 42);
  }
}

TEST(FreeImageData, NullPlanesAreSkipped) {
  for (const int format : kFormats) {
    ImageHeader h{};
    h.format = format;
    free_image_data(&h);
    free_image_data(&h);
    expect_planes(h, nullptr, nullptr, nullptr);
  }
}

// ---- Blend images ------------------------------------------------------------------------------------------------------

void expect_type7(const BlendImage& image, int width, int height) {
  EXPECT_EQ(width, image.width);
  EXPECT_EQ(height, image.height);
  EXPECT_EQ(3, image.channels);
  EXPECT_EQ(3 * width, image.stride);
  for (const int32_t step : image.steps) EXPECT_EQ(3, step);
  EXPECT_EQ(7, image.type);
  EXPECT_EQ(image.data[0] + 1, image.data[1]);
  EXPECT_EQ(image.data[0] + 2, image.data[2]);
}

void expect_type8(const BlendGray& image, int width, int height) {
  EXPECT_EQ(width, image.width);
  EXPECT_EQ(height, image.height);
  EXPECT_EQ(1, image.channels);
  EXPECT_EQ(width, image.stride);
  EXPECT_EQ(1, image.step);
  EXPECT_EQ(8, image.type);
}

TEST(InitBlendImageHeader, Type7DerivesTheChannelsFromTheFirst) {
  BlendImage image{};
  image.data[0] = samples;
  EXPECT_EQ(0, init_blendimage_header(&image, 5, 4, 7));
  EXPECT_EQ(samples, image.data[0]);
  expect_type7(image, 5, 4);
}

TEST(InitBlendImageHeader, Type8LeavesTheSamples) {
  BlendGray image{};
  image.data = samples;
  EXPECT_EQ(0, init_blendimage_header(&image, 5, 4, 8));
  EXPECT_EQ(samples, image.data);
  expect_type8(image, 5, 4);
}

TEST(BlendImageHeaders, TheOneChannelLayoutIsNoPrefixOfTheThreeChannelOne) {
  EXPECT_NE(offsetof(BlendImage, stride), offsetof(BlendGray, stride));
  EXPECT_NE(offsetof(BlendImage, data), offsetof(BlendGray, data));
  EXPECT_NE(offsetof(BlendImage, type), offsetof(BlendGray, type));
  // Told 8, a builder lays out the short record even where a long one lies, and touches nothing behind it.
  BlendImage image, before;
  std::memset(&image, 0x5A, sizeof image);
  before = image;
  EXPECT_EQ(0, init_blendimage_header(&image, 5, 4, 8));
  constexpr size_t kShort = sizeof(BlendGray);
  static_assert(kShort < sizeof image);
  EXPECT_EQ(0, std::memcmp(reinterpret_cast<char*>(&before) + kShort, reinterpret_cast<char*>(&image) + kShort,
                           sizeof image - kShort));
  BlendGray gray;
  std::memcpy(&gray, &image, sizeof gray);
  expect_type8(gray, 5, 4);
}

TEST(BlendImageHeaders, OtherTypesLeaveTheRecord) {
  for (const int type : {0, 1, 4, 6, 9, -7}) {
    BlendImage image, before;
    std::memset(&image, 0x5A, sizeof image);
    before = image;
    EXPECT_EQ(-1, init_blendimage_header(&image, 5, 4, type));
    EXPECT_EQ(-1, malloc_blendimage_header(&image, 5, 4, type));
    EXPECT_EQ(0, std::memcmp(&before, &image, sizeof image));
  }
}

TEST(MallocBlendImageHeader, Type7HasZeroSamplesAndIsFreed) {
  BlendImage image;
  std::memset(&image, 0x5A, sizeof image);
  ASSERT_EQ(0, malloc_blendimage_header(&image, 5, 4, 7));
  expect_type7(image, 5, 4);
  for (int i = 0; i < 60; ++i) EXPECT_EQ(0, image.data[0][i]);
  FreeImageHeader(&image, 7);
  EXPECT_EQ(nullptr, image.data[0]);
  FreeImageHeader(&image, 7);
}

TEST(MallocBlendImageHeader, Type8HasZeroSamplesAndIsFreed) {
  BlendGray image;
  std::memset(&image, 0x5A, sizeof image);
  ASSERT_EQ(0, malloc_blendimage_header(&image, 5, 4, 8));
  expect_type8(image, 5, 4);
  for (int i = 0; i < 20; ++i) EXPECT_EQ(0, image.data[i]);
  FreeImageHeader(&image, 8);
  EXPECT_EQ(nullptr, image.data);
}

TEST(FreeBlendImageHeader, EveryTypeBut7CountsAs8) {
  for (const int type : {0, 6, 9, -1}) {
    BlendGray image{};
    ASSERT_EQ(0, malloc_blendimage_header(&image, 5, 4, 8));
    FreeImageHeader(&image, type);
    EXPECT_EQ(nullptr, image.data);
  }
}

TEST(MallocBlendImageHeader, NegativeAndHugeSizesGiveNullSamples) {
  for (const auto& [width, height] : {std::pair{-5, 4}, {5, -4}, {-5, -4}, {INT32_MAX, INT32_MAX}}) {
    BlendImage image{};
    malloc_blendimage_header(&image, width, height, 7);
    EXPECT_EQ(nullptr, image.data[0]);
    BlendGray gray{};
    malloc_blendimage_header(&gray, width, height, 8);
    EXPECT_EQ(nullptr, gray.data);
  }
}

TEST(TemporaryImages, AreZeroAndEndWithTheirScope) {
  Temporary<BlendImage> image(4, 3);
  ASSERT_TRUE(image);
  expect_type7(*image, 4, 3);
  for (int i = 0; i < 36; ++i) EXPECT_EQ(0, image->data[0][i]);
  Temporary<BlendGray> gray(4, 3);
  ASSERT_TRUE(gray);
  expect_type8(*gray, 4, 3);
  Temporary<BlendImage> impossible(-1, 3);
  EXPECT_FALSE(impossible);
}

}  // namespace
}  // namespace biseam::test
