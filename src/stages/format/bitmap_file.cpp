#include "stages/format/bitmap_file.hpp"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace biseam {

namespace {

constexpr uint16_t kMagic = 19778;  // "BM"
constexpr int kMagicBytes = 2;
constexpr int kHeaderBytes = 12 + 40;  // what follows the magic: rest of the file header, information header
constexpr int kWidthAt = 16, kHeightAt = 20, kDepthAt = 26;
constexpr int kPaletteBytes = 256 * 4;
constexpr int kColorOffset = kMagicBytes + kHeaderBytes;
constexpr int kGrayOffset = kColorOffset + kPaletteBytes;

uint16_t get16(const uint8_t* p) { return static_cast<uint16_t>(p[0] | p[1] << 8); }
int32_t get32(const uint8_t* p) { return static_cast<int32_t>(get16(p) | static_cast<uint32_t>(get16(p + 2)) << 16); }

void skip(std::FILE* file, int bytes) {
  for (int i = 0; i < bytes && std::fgetc(file) != EOF; ++i) {
  }
}

// Zero-filled; null when a side is negative or memory is short.
uint8_t* zeroed_samples(int32_t width, int32_t height, int channels) {
  if (width < 0 || height < 0) return nullptr;
  const uint64_t bytes = uint64_t(width) * uint64_t(height) * uint64_t(channels);  // below 2^64
  return bytes > PTRDIFF_MAX ? nullptr : static_cast<uint8_t*>(std::calloc(1, static_cast<size_t>(bytes)));
}

// Rows are stored bottom-up.  Past the end of the file the samples stay zero.
void read_rows(std::FILE* file, const ClImage& image) {
  const size_t row_bytes = size_t(image.width) * size_t(image.channels);
  const int padding = static_cast<int>((4 - row_bytes % 4) % 4);
  for (int32_t y = image.height - 1; y >= 0; --y) {
    uint8_t* row = image.data + size_t(y) * row_bytes;
    if (std::fread(row, 1, row_bytes, file) < row_bytes) return;
    skip(file, padding);
  }
}

void load_samples(std::FILE* file, ClImage& image) {
  uint8_t header[kHeaderBytes] = {};
  if (std::fread(header, 1, sizeof header, file) < sizeof header) return;
  const int depth = get16(header + kDepthAt);
  if (depth != 8 && depth != 24) return;
  image.width = get32(header + kWidthAt);
  image.height = get32(header + kHeightAt);
  image.channels = depth / 8;
  image.data = zeroed_samples(image.width, image.height, image.channels);
  if (image.data == nullptr || image.height < 1 || image.width < 1) return;
  if (depth == 8) skip(file, kPaletteBytes);
  read_rows(file, image);
}

class HeaderWriter {
 public:
  explicit HeaderWriter(std::FILE* file) : file_(file) {}
  void put8(uint32_t value) { std::fputc(static_cast<int>(value & 255u), file_); }
  void put16(uint32_t value) {
    put8(value);
    put8(value >> 8);
  }
  void put32(uint32_t value) {
    put16(value);
    put16(value >> 16);
  }

 private:
  std::FILE* file_;
};

struct BitmapSizes {
  uint32_t file, offset, depth, image, colors;
};

// The declared sizes count every row with 4 - remainder bytes of padding, four of them where none are needed, and a grey file
// with a single row of samples.  The bytes of the file are contract.
BitmapSizes color_sizes(const ClImage& image) {
  const int32_t row = static_cast<int32_t>(3u * static_cast<uint32_t>(image.width));
  const uint32_t rows = static_cast<uint32_t>(image.height) * static_cast<uint32_t>(row + int64_t{4} - row % 4);
  return {rows + uint32_t{kColorOffset}, kColorOffset, 24, rows, 0};
}

BitmapSizes gray_sizes(const ClImage& image) {
  const uint32_t row = static_cast<uint32_t>(image.width + int64_t{4} - image.width % 4);
  return {static_cast<uint32_t>(image.width) + uint32_t{kGrayOffset}, kGrayOffset, 8, static_cast<uint32_t>(image.height) * row,
          256};
}

void write_headers(std::FILE* file, const ClImage& image, const BitmapSizes& sizes) {
  HeaderWriter out(file);
  out.put32(sizes.file);
  out.put32(0);
  out.put32(sizes.offset);
  out.put32(40);
  out.put32(static_cast<uint32_t>(image.width));
  out.put32(static_cast<uint32_t>(image.height));
  out.put16(1);
  out.put16(sizes.depth);
  out.put32(0);
  out.put32(sizes.image);
  out.put32(0);
  out.put32(0);
  out.put32(sizes.colors);
  out.put32(sizes.colors);
}

void write_gray_palette(std::FILE* file) {
  HeaderWriter out(file);
  for (uint32_t i = 0; i < 256; ++i) out.put32(i | i << 8 | i << 16);
}

// Padding is the remainder of the row length by 4, not what is missing to a multiple of 4: rows whose remainder is 1 or 3 have
// a length no reader expects, and are contract like the rest of the file.
void write_rows(std::FILE* file, const ClImage& image) {
  if (image.data == nullptr || image.width < 1) return;
  const size_t row_bytes = size_t(image.width) * size_t(image.channels);
  for (int32_t y = image.height - 1; y >= 0; --y) {
    std::fwrite(image.data + size_t(y) * row_bytes, 1, row_bytes, file);
    for (size_t i = 0; i < row_bytes % 4; ++i) std::fputc(0, file);
  }
}

}  // namespace

ClImage* load_bitmap(const char* path) {
  ClImage* image = static_cast<ClImage*>(std::calloc(1, sizeof(ClImage)));
  if (image == nullptr) return nullptr;
  std::FILE* file = std::fopen(path, "rb");
  if (file == nullptr) {
    std::free(image);
    return nullptr;
  }
  uint8_t magic[kMagicBytes] = {};
  if (std::fread(magic, 1, sizeof magic, file) == sizeof magic && get16(magic) == kMagic) load_samples(file, *image);
  // The stream stays open on purpose, on every way out: it is part of the contract.
  return image;
}

bool save_bitmap(const char* path, const ClImage& image) {
  std::FILE* file = std::fopen(path, "wb");
  if (file == nullptr) return false;
  HeaderWriter(file).put16(kMagic);
  if (image.channels == 3) {
    write_headers(file, image, color_sizes(image));
    write_rows(file, image);
  } else if (image.channels == 1) {
    write_headers(file, image, gray_sizes(image));
    write_gray_palette(file);
    write_rows(file, image);
  }
  std::fclose(file);
  return true;
}

}  // namespace biseam
