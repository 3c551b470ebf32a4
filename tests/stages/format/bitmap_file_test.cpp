#include "stages/format/bitmap_file.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

#include "biseam/biseam.h"
#include "support/random_source.hpp"
#include "support/temporary_file.hpp"

namespace biseam::test {
namespace {

using Bytes = std::vector<uint8_t>;

void append16(Bytes& bytes, uint32_t value) {
  bytes.push_back(static_cast<uint8_t>(value));
  bytes.push_back(static_cast<uint8_t>(value >> 8));
}

void append32(Bytes& bytes, uint32_t value) {
  append16(bytes, value);
  append16(bytes, value >> 16);
}

struct Header {
  uint32_t file_size, offset, width, height, depth, image_size, colors;
};

Bytes header_bytes(const Header& h) {
  Bytes out = {'B', 'M'};
  append32(out, h.file_size);
  append16(out, 0);
  append16(out, 0);
  append32(out, h.offset);
  append32(out, 40);
  append32(out, h.width);
  append32(out, h.height);
  append16(out, 1);
  append16(out, h.depth);
  append32(out, 0);
  append32(out, h.image_size);
  append32(out, 0);
  append32(out, 0);
  append32(out, h.colors);
  append32(out, h.colors);
  return out;
}

void append_palette(Bytes& bytes) {
  for (int i = 0; i < 256; ++i) {
    for (int c = 0; c < 3; ++c) bytes.push_back(static_cast<uint8_t>(i));
    bytes.push_back(0);
  }
}

void append_rows(Bytes& bytes, const Bytes& samples, size_t row_bytes, size_t padding) {
  for (size_t end = samples.size(); end >= row_bytes && end > 0; end -= row_bytes) {
    bytes.insert(bytes.end(), samples.begin() + static_cast<long>(end - row_bytes), samples.begin() + static_cast<long>(end));
    bytes.insert(bytes.end(), padding, 0);
  }
}

Bytes counted(size_t count, uint8_t first = 1) {
  Bytes out(count);
  for (uint8_t& b : out) b = first++;
  return out;
}

Bytes saved(int width, int height, int channels, Bytes samples) {
  TemporaryFile file;
  const ClImage image{width, height, channels, samples.data()};
  EXPECT_EQ(1, clSaveImage(file.path(), &image));
  return file.bytes();
}

// A loaded record, released.
struct Loaded {
  explicit Loaded(const char* path) : image(clLoadImage(path)) {}
  explicit Loaded(const Bytes& file) : Loaded(TemporaryFile(file).path()) {}
  Loaded(const Loaded&) = delete;
  Loaded& operator=(const Loaded&) = delete;
  ~Loaded() {
    if (image != nullptr) std::free(image->data);
    std::free(image);
  }
  Bytes samples() const {
    return Bytes(image->data, image->data + size_t(image->width) * size_t(image->height) * size_t(image->channels));
  }
  ClImage* image;
};

void expect_unset(const ClImage* image) {
  ASSERT_NE(nullptr, image);
  EXPECT_EQ(0, image->width);
  EXPECT_EQ(0, image->height);
  EXPECT_EQ(0, image->channels);
  EXPECT_EQ(nullptr, image->data);
}

// ---- Saving ------------------------------------------------------------------------------------------------------------

TEST(BitmapSave, FourPixelColorRowsHaveNoPaddingAndDeclareFourBytesTooMany) {
  const Bytes samples = counted(24);
  Bytes want = header_bytes({86, 54, 4, 2, 24, 2 * 16, 0});
  append_rows(want, samples, 12, 0);
  EXPECT_EQ(want, saved(4, 2, 3, samples));
}

TEST(BitmapSave, FivePixelColorRowsArePaddedByTheRemainder) {
  const Bytes samples = counted(30);
  Bytes want = header_bytes({2 * 16 + 54, 54, 5, 2, 24, 2 * 16, 0});
  append_rows(want, samples, 15, 3);
  EXPECT_EQ(want, saved(5, 2, 3, samples));
}

TEST(BitmapSave, SixPixelColorRowsArePaddedRight) {
  const Bytes samples = counted(18);
  Bytes want = header_bytes({20 + 54, 54, 6, 1, 24, 20, 0});
  append_rows(want, samples, 18, 2);
  EXPECT_EQ(want, saved(6, 1, 3, samples));
}

TEST(BitmapSave, SixPixelGrayFileDeclaresTheWidthAsItsSize) {
  const Bytes samples = counted(12);
  Bytes want = header_bytes({1084, 1078, 6, 2, 8, 2 * 8, 256});
  append_palette(want);
  append_rows(want, samples, 6, 2);
  EXPECT_EQ(want, saved(6, 2, 1, samples));
}

TEST(BitmapSave, GrayRowsOfEveryRemainder) {
  for (int width = 1; width <= 9; ++width) {
    const Bytes samples = counted(size_t(width) * 3);
    const uint32_t w = static_cast<uint32_t>(width);
    Bytes want = header_bytes({w + 1078, 1078, w, 3, 8, 3 * (w + 4 - w % 4), 256});
    append_palette(want);
    append_rows(want, samples, w, w % 4);
    EXPECT_EQ(want, saved(width, 3, 1, samples)) << width;
  }
}

TEST(BitmapSave, OtherChannelCountsWriteTheMagicOnly) {
  for (const int channels : {0, 2, 4, -1}) EXPECT_EQ((Bytes{'B', 'M'}), saved(2, 2, channels, counted(16))) << channels;
}

TEST(BitmapSave, EmptyImagesWriteHeadersOnly) {
  EXPECT_EQ(header_bytes({54, 54, 4, 0, 24, 0, 0}), saved(4, 0, 3, {}));
  EXPECT_EQ(header_bytes({4 * 5 + 54, 54, 0, 5, 24, 4 * 5, 0}), saved(0, 5, 3, {}));
}

// What a load returns whose samples were not to be had can be passed on.
TEST(BitmapSave, NullSamplesWriteHeadersOnly) {
  TemporaryFile file;
  const ClImage image{4, 2, 3, nullptr};
  EXPECT_EQ(1, clSaveImage(file.path(), &image));
  EXPECT_EQ(54u, file.bytes().size());
}

TEST(BitmapSave, FileThatCantBeCreatedGivesMinusOne) {
  Bytes samples = counted(3);
  const ClImage image{1, 1, 3, samples.data()};
  EXPECT_EQ(-1, clSaveImage("/nonexistent/folder/image.bmp", &image));
}

TEST(BitmapSave, StreamIsClosed) {
  const long before = open_descriptors();
  saved(2, 2, 3, counted(12));
  EXPECT_EQ(before, open_descriptors());
}

// ---- Loading -----------------------------------------------------------------------------------------------------------

Bytes well_formed(int width, int height, int channels, const Bytes& samples) {
  const size_t row_bytes = size_t(width) * size_t(channels);
  Bytes file = header_bytes(
      {0, 0, static_cast<uint32_t>(width), static_cast<uint32_t>(height), static_cast<uint32_t>(8 * channels), 0, 0});
  if (channels == 1) file.insert(file.end(), 1024, 0xEE);
  append_rows(file, samples, row_bytes, (4 - row_bytes % 4) % 4);
  return file;
}

TEST(BitmapLoad, MissingFileGivesNull) {
  const long before = open_descriptors();
  EXPECT_EQ(nullptr, clLoadImage("/nonexistent/folder/image.bmp"));
  EXPECT_EQ(before, open_descriptors());
}

TEST(BitmapLoad, RowsOfEveryRemainderComeTopDown) {
  for (const int channels : {1, 3}) {
    for (int width = 1; width <= 9; ++width) {
      const Bytes samples = counted(size_t(width * channels) * 4);
      const Loaded loaded(well_formed(width, 4, channels, samples));
      ASSERT_NE(nullptr, loaded.image);
      EXPECT_EQ(width, loaded.image->width);
      EXPECT_EQ(4, loaded.image->height);
      EXPECT_EQ(channels, loaded.image->channels);
      EXPECT_EQ(samples, loaded.samples());
    }
  }
}

TEST(BitmapLoad, DataOffsetAndPaletteAreNotUsed) {
  const Bytes samples = counted(8);
  Bytes file = well_formed(4, 2, 1, samples);
  file[10] = 200;  // data offset
  EXPECT_EQ(samples, Loaded(file).samples());
}

TEST(BitmapLoad, SavedFilesReadBackWhereThePaddingIsRight) {
  RandomSource random;
  for (const int width : {2, 4, 6, 8, 10, 64}) {
    for (const int channels : {1, 3}) {
      Bytes samples(size_t(width * 5 * channels));
      for (uint8_t& s : samples) s = random.byte();
      TemporaryFile file;
      const ClImage image{width, 5, channels, samples.data()};
      ASSERT_EQ(1, clSaveImage(file.path(), &image));
      EXPECT_EQ(samples, Loaded(file.path()).samples());
    }
  }
}

// 15 + 3 bytes a row are written, 15 + 1 are read.
TEST(BitmapLoad, FivePixelColorFileDoesNotReadBack) {
  const Bytes samples = counted(30);
  const Bytes file = saved(5, 2, 3, samples);
  Bytes want(30);
  std::copy_n(file.begin() + 54, 15, want.begin() + 15);
  std::copy_n(file.begin() + 54 + 16, 15, want.begin());
  const Loaded loaded(file);
  EXPECT_EQ(want, loaded.samples());
  EXPECT_NE(samples, loaded.samples());
}

TEST(BitmapLoad, WrongMagicGivesARecordWithUnsetFields) {
  Bytes file = well_formed(4, 2, 3, counted(24));
  file[1] = 'N';
  expect_unset(Loaded(file).image);
  expect_unset(Loaded(Bytes{}).image);
  expect_unset(Loaded(Bytes{'B'}).image);
}

TEST(BitmapLoad, OtherDepthsGiveARecordWithUnsetFields) {
  for (const int depth : {0, 1, 4, 16, 32, 24 + 256}) {
    Bytes file = well_formed(4, 2, 3, counted(24));
    file[28] = static_cast<uint8_t>(depth);
    file[29] = static_cast<uint8_t>(depth >> 8);
    expect_unset(Loaded(file).image);
  }
}

TEST(BitmapLoad, StreamStaysOpenOnEveryPath) {
  Bytes wrong_magic = well_formed(4, 2, 3, counted(24)), wrong_depth = wrong_magic, no_rows = wrong_magic;
  wrong_magic[0] = 'X';
  wrong_depth[28] = 16;
  no_rows[22] = 0;
  for (const Bytes& bytes : {well_formed(4, 2, 3, counted(24)), wrong_magic, wrong_depth, no_rows}) {
    const TemporaryFile file(bytes);
    const long before = open_descriptors();
    const Loaded loaded(file.path());
    EXPECT_EQ(before + 1, open_descriptors());
  }
}

TEST(BitmapLoad, TruncatedFilesLeaveZeros) {
  for (const int channels : {1, 3}) {
    const Bytes whole = well_formed(5, 3, channels, counted(size_t(15 * channels), 100));
    const size_t headers = channels == 1 ? 1078 : 54;
    for (size_t length = 54; length < whole.size(); ++length) {
      const Bytes cut(whole.begin(), whole.begin() + static_cast<long>(length));
      Bytes padded = cut;
      padded.resize(whole.size(), 0);
      const Loaded loaded(cut), reference(padded);
      ASSERT_EQ(5, loaded.image->width);
      ASSERT_EQ(reference.samples(), loaded.samples()) << length;
      if (length <= headers) {
        ASSERT_EQ(Bytes(size_t(15 * channels)), loaded.samples());
      }
      if (channels == 1 && length == 54) length = 1070;
    }
  }
}

TEST(BitmapLoad, TruncatedHeadersGiveARecordWithUnsetFields) {
  const Bytes whole = well_formed(5, 3, 3, counted(45));
  for (long length = 0; length < 54; ++length) expect_unset(Loaded(Bytes(whole.begin(), whole.begin() + length)).image);
}

Bytes sized(uint32_t width, uint32_t height, uint32_t depth) {
  Bytes file = header_bytes({0, 0, width, height, depth, 0, 0});
  file.resize(file.size() + 2048, 0x55);
  return file;
}

TEST(BitmapLoad, NegativeSidesGiveARecordWithoutSamples) {
  for (const uint32_t depth : {8u, 24u}) {
    for (const auto& [width, height] :
         {std::pair{uint32_t(-4), 4u}, {4u, uint32_t(-4)}, {0x80000000u, 4u}, {uint32_t(-4), uint32_t(-4)}}) {
      const Loaded loaded(sized(width, height, depth));
      ASSERT_NE(nullptr, loaded.image);
      EXPECT_EQ(static_cast<int32_t>(width), loaded.image->width);
      EXPECT_EQ(static_cast<int32_t>(height), loaded.image->height);
      EXPECT_EQ(nullptr, loaded.image->data);
    }
  }
}

// The products wrap in 32 and in 64 bits.
TEST(BitmapLoad, SidesWhoseProductOverflowsGiveARecordWithoutSamples) {
  const Loaded loaded(sized(0x7fffffffu, 0x7fffffffu, 24));
  ASSERT_NE(nullptr, loaded.image);
  EXPECT_EQ(0x7fffffff, loaded.image->width);
  EXPECT_EQ(3, loaded.image->channels);
  EXPECT_EQ(nullptr, loaded.image->data);
}

TEST(BitmapLoad, NoRowsReturnAfterTheAllocation) {
  const Loaded loaded(sized(4, 0, 24));
  EXPECT_EQ(4, loaded.image->width);
  EXPECT_EQ(0, loaded.image->height);
  EXPECT_EQ(3, loaded.image->channels);
}

}  // namespace
}  // namespace biseam::test
