#include "stages/format/yuv_file.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <vector>

#include "base/records.hpp"
#include "biseam/biseam.h"
#include "support/temporary_file.hpp"

namespace biseam::test {
namespace {

using Bytes = std::vector<uint8_t>;

Bytes counted(size_t count, int first = 0) {
  Bytes out(count);
  for (uint8_t& b : out) b = static_cast<uint8_t>(first++);
  return out;
}

struct Stream {
  Stream(const TemporaryFile& file, const char* mode) : stream(std::fopen(file.path(), mode)) {}
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  ~Stream() { std::fclose(stream); }
  std::FILE* stream;
};

Bytes slice(const Bytes& bytes, size_t from, size_t count) {
  return Bytes(bytes.begin() + static_cast<long>(from), bytes.begin() + static_cast<long>(from + count));
}

// ---- Reading -----------------------------------------------------------------------------------------------------------

TEST(YuvRead, Format0ReadsHalfTheChromaRows) {
  const Bytes bytes = counted(200);
  const TemporaryFile file(bytes);
  const Stream in(file, "rb");
  ImageHeader image{};
  ASSERT_EQ(1, read_yuv_image(in.stream, &image, 5, 5, 8, 6, 0));
  EXPECT_EQ(slice(bytes, 0, 40), Bytes(image.planes[0], image.planes[0] + 40));
  EXPECT_EQ(slice(bytes, 40, 15), Bytes(image.planes[1], image.planes[1] + 15));  // (6 * 5) / 2
  EXPECT_EQ(image.planes[1] + 1, image.planes[2]);
  EXPECT_EQ(5, image.width);
  EXPECT_EQ(5, image.height);
  EXPECT_EQ(8, image.strides[0]);
  EXPECT_EQ(6, image.strides[1]);
  EXPECT_EQ(2, image.steps[1]);
  EXPECT_EQ(0, image.format);
  EXPECT_EQ(55, std::ftell(in.stream));
  release_image(image);
}

TEST(YuvRead, Format4ReadsAllChromaRows) {
  const Bytes bytes = counted(200);
  const TemporaryFile file(bytes);
  const Stream in(file, "rb");
  ImageHeader image{};
  ASSERT_EQ(1, read_yuv_image(in.stream, &image, 6, 4, 8, 6, 4));
  EXPECT_EQ(slice(bytes, 0, 32), Bytes(image.planes[0], image.planes[0] + 32));
  EXPECT_EQ(slice(bytes, 32, 24), Bytes(image.planes[1], image.planes[1] + 24));
  EXPECT_EQ(image.planes[1] + 1, image.planes[2]);
  release_image(image);
}

TEST(YuvRead, FramesFollowEachOtherAndTheStreamStaysOpen) {
  const Bytes bytes = counted(24);
  const TemporaryFile file(bytes);
  const Stream in(file, "rb");
  for (size_t frame = 0; frame < 2; ++frame) {
    ImageHeader image{};
    ASSERT_EQ(1, read_yuv_image(in.stream, &image, 4, 2, 4, 4, 0));
    EXPECT_EQ(slice(bytes, 12 * frame, 8), Bytes(image.planes[0], image.planes[0] + 8));
    EXPECT_EQ(slice(bytes, 12 * frame + 8, 4), Bytes(image.planes[1], image.planes[1] + 4));
    release_image(image);
  }
  EXPECT_EQ(EOF, std::fgetc(in.stream));
}

TEST(YuvRead, OtherFormatsGive0AndLeaveNoPlanes) {
  const TemporaryFile file(counted(500));
  const Stream in(file, "rb");
  for (const int format : {1, 2, 3, 5, 6, 7, 8, -1}) {
    uint8_t other;
    ImageHeader image{};
    image.planes[0] = image.planes[1] = image.planes[2] = &other;
    EXPECT_EQ(0, read_yuv_image(in.stream, &image, 4, 4, 4, 4, format)) << format;
    for (const uint8_t* plane : image.planes) EXPECT_EQ(nullptr, plane) << format;
    EXPECT_EQ(0, std::ftell(in.stream));
  }
}

TEST(YuvRead, ShortFilesLeaveZeros) {
  for (size_t length = 0; length <= 24; ++length) {
    Bytes bytes = counted(length, 1);
    const TemporaryFile file(bytes);
    const Stream in(file, "rb");
    ImageHeader image{};
    ASSERT_EQ(1, read_yuv_image(in.stream, &image, 4, 4, 4, 4, 0));
    bytes.resize(24, 0);
    EXPECT_EQ(slice(bytes, 0, 16), Bytes(image.planes[0], image.planes[0] + 16));
    EXPECT_EQ(slice(bytes, 16, 8), Bytes(image.planes[1], image.planes[1] + 8));
    release_image(image);
  }
}

TEST(YuvRead, NoRowsAreAFrame) {
  const TemporaryFile file(counted(8));
  const Stream in(file, "rb");
  ImageHeader image{};
  EXPECT_EQ(1, read_yuv_image(in.stream, &image, 4, 0, 4, 4, 0));
  EXPECT_EQ(0, std::ftell(in.stream));
  release_image(image);
}

TEST(YuvRead, NegativeAndHugeSizesGive0AndNoPlanes) {
  const TemporaryFile file(counted(8));
  const Stream in(file, "rb");
  for (const auto& [height, stride0, stride1] : {std::tuple{-2, 4, 4}, {2, -4, 4}, {2, 4, -4}, {INT32_MAX, INT32_MAX, 4}}) {
    ImageHeader image{};
    EXPECT_EQ(0, read_yuv_image(in.stream, &image, 4, height, stride0, stride1, 4));
    for (const uint8_t* plane : image.planes) EXPECT_EQ(nullptr, plane);
  }
}

// ---- Writing -----------------------------------------------------------------------------------------------------------

// An image of three separate planes of 64 bytes, 4 rows of 5 (luma) and 6 (chroma) bytes.
struct Planes {
  Planes() {
    image.width = 5;
    image.height = 5;
    for (int p = 0; p < 3; ++p) image.planes[p] = bytes[p].data();
    image.strides[0] = 5;
    image.strides[1] = 6;
    image.strides[2] = 1000;  // not used
    image.format = -1;        // not looked at
  }
  Bytes bytes[3] = {counted(80, 0), counted(80, 80), counted(80, 160)};
  ImageHeader image{};
};

Bytes written(const ImageHeader& image, int format) {
  const TemporaryFile file;
  {
    const Stream out(file, "wb");
    save_yuv_image(out.stream, &image, format);
    EXPECT_EQ(0, std::fflush(out.stream)) << "still open";
  }
  return file.bytes();
}

void expect_written(int format, size_t luma, size_t plane1, size_t plane2) {
  const Planes planes;
  Bytes want = slice(planes.bytes[0], 0, luma);
  const Bytes second = slice(planes.bytes[1], 0, plane1), third = slice(planes.bytes[2], 0, plane2);
  want.insert(want.end(), second.begin(), second.end());
  want.insert(want.end(), third.begin(), third.end());
  EXPECT_EQ(want, written(planes.image, format)) << format;
}

TEST(YuvWrite, SemiPlanar420HalvesTheChromaBytes) {
  expect_written(0, 25, 15, 0);
  expect_written(1, 25, 15, 0);
}

TEST(YuvWrite, Planar420WritesAQuarterTwice) { expect_written(2, 25, 7, 7); }

TEST(YuvWrite, SemiPlanar422WritesAllChromaBytes) {
  expect_written(4, 25, 30, 0);
  expect_written(5, 25, 30, 0);
}

TEST(YuvWrite, Planar422WritesHalfTwice) { expect_written(6, 25, 15, 15); }

TEST(YuvWrite, PackedRgbWritesThreeBytesPerStrideUnit) { expect_written(7, 75, 0, 0); }

TEST(YuvWrite, OtherFormatsWriteNothing) {
  for (const int format : {3, 8, 9, -1}) expect_written(format, 0, 0, 0);
}

// A packed image whose stride counts bytes has a third of the bytes that are written; the file keeps its length.
TEST(YuvWrite, PackedRgbOfByteStridesIsFilledUpWithZeros) {
  ImageHeader image{};
  allocate_image(image, 2, 2, 7, 0, 7);
  const Bytes samples = counted(14, 1);
  std::copy(samples.begin(), samples.end(), image.planes[0]);
  Bytes want = samples;
  want.resize(42, 0);
  EXPECT_EQ(want, written(image, 7));
  release_image(image);
}

TEST(YuvWrite, NullPlanesAndEmptySizesWriteNothing) {
  for (const int format : {0, 1, 2, 4, 5, 6, 7}) {
    ImageHeader none{};
    none.width = none.height = 4;
    none.strides[0] = none.strides[1] = 4;
    EXPECT_EQ(Bytes{}, written(none, format));
    Planes planes;
    planes.image.height = 0;
    EXPECT_EQ(Bytes{}, written(planes.image, format));
    planes.image.height = -3;
    EXPECT_EQ(Bytes{}, written(planes.image, format));
  }
}

TEST(YuvWrite, FramesReadBack) {
  for (const int format : {0, 4}) {
    const Bytes bytes = counted(8 * 6 * 2);
    const TemporaryFile original(bytes);
    const Stream in(original, "rb");
    ImageHeader image{};
    ASSERT_EQ(1, read_yuv_image(in.stream, &image, 8, 6, 8, 8, format));
    EXPECT_EQ(slice(bytes, 0, format == 0 ? 72 : 96), written(image, format));
    release_image(image);
  }
}

}  // namespace
}  // namespace biseam::test
