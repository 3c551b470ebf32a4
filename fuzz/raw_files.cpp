// Files of the library: a bitmap file of any bytes, written again and read again; then a raw frame of any sizes out of the same
// bytes, its format, sizes and strides from the first eighteen.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "biseam/biseam.h"
#include "fuzz/expect.hpp"
#include "fuzz/input.hpp"
#include "fuzz/memory_file.hpp"

using namespace biseam;

namespace {

std::FILE* last_opened = nullptr;

constexpr std::int64_t kMostBytes = std::int64_t{1} << 24;  // of what is written: more only takes time

struct FreeBitmap {
  void operator()(ClImage* image) const {
    std::free(image->data);
    std::free(image);
  }
};
using Bitmap = std::unique_ptr<ClImage, FreeBitmap>;

// The stream of a bitmap file stays open, as callers expect.
Bitmap load(const fuzz::MemoryFile& file) {
  Bitmap image(clLoadImage(file.path().c_str()));
  std::fclose(last_opened);
  return image;
}

void try_bitmap(const std::uint8_t* data, std::size_t size) {
  const fuzz::MemoryFile file(data, size);
  const Bitmap image = load(file);
  fuzz::expect(image != nullptr, "a file that can be opened gives a record");
  if (image->data == nullptr || image->width < 1 || image->height < 1) return;
  const std::int64_t samples = std::int64_t{image->width} * image->height * image->channels;
  if (samples > kMostBytes) return;
  const fuzz::MemoryFile copy(nullptr, 0);
  fuzz::expect(clSaveImage(copy.path().c_str(), image.get()) == 1, "what was read is written");
  if (image->width * image->channels % 2 != 0) return;  // rows that no reader expects
  const Bitmap again = load(copy);
  const bool same = again->width == image->width && again->height == image->height && again->channels == image->channels;
  fuzz::expect(same && std::memcmp(again->data, image->data, std::size_t(samples)) == 0, "what was written is read");
}

void try_frame(fuzz::Input input, const std::uint8_t* data, std::size_t size) {
  const int format = input.between(0, 9), kind = input.byte();
  std::int32_t sides[4];  // width, height, strides
  for (std::int32_t& side : sides) {
    const std::uint32_t value = input.word();
    side = kind % 4 == 0 ? static_cast<std::int32_t>(value) : static_cast<std::int32_t>(value % 500);
  }
  const fuzz::MemoryFile file(data, size), copy(nullptr, 0);
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> from(std::fopen(file.path().c_str(), "rb"), std::fclose);
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> to(std::fopen(copy.path().c_str(), "wb"), std::fclose);
  ImageHeader image{};
  const int read = read_yuv_image(from.get(), &image, sides[0], sides[1], sides[2], sides[3], format);
  fuzz::expect(read == 0 || format == 0 || format == 4, "two formats are read");
  fuzz::expect(read == 1 || (image.planes[0] == nullptr && image.planes[1] == nullptr), "what is not read has no planes");
  if (read == 1 && std::int64_t{sides[1]} * sides[2] <= kMostBytes && std::int64_t{sides[1]} * sides[3] <= kMostBytes) {
    save_yuv_image(to.get(), &image, format);
  }
  if (read == 1) free_image_data(&image);
}

}  // namespace

// fopen() of this program comes here.
extern "C" std::FILE* __real_fopen(const char* path, const char* mode);
extern "C" std::FILE* __wrap_fopen(const char* path, const char* mode) {
  last_opened = __real_fopen(path, mode);
  return last_opened;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try_bitmap(data, size);
  try_frame(fuzz::Input(data, size), data, size);
  return 0;
}
