#include "stages/format/convert.hpp"

#include <cstddef>
#include <cstdint>

#include "stages/format/colour.hpp"

namespace biseam {

namespace {

// The integer RGB samples of a view, which end with the last row's last pixel.
class RgbSamples {
 public:
  explicit RgbSamples(const RgbView& rgb)
      : data_(static_cast<const int32_t*>(rgb.data)),
        stride_(rgb.stride),
        end_(int64_t{rgb.stride} * (int64_t{rgb.height} - 1) + int64_t{3} * rgb.width),
        columns_(rgb.width),
        rows_(rgb.height) {}

  const int32_t* row(int64_t y) const { return data_ + y * stride_; }

  // Pixel of a block.  Where there is none, the one to the left stands in, then the one above.
  const int32_t* pixel(int64_t x, int64_t y) const {
    if (exists(x, y)) return row(y) + 3 * x;
    if (x >= columns_ && exists(x - 1, y)) return row(y) + 3 * (x - 1);
    return pixel(x, y - 1);
  }

 private:
  bool exists(int64_t x, int64_t y) const {
    if (x < columns_ && y < rows_) return true;
    const int64_t offset = y * stride_ + 3 * x;
    return offset >= 0 && offset + 3 <= end_;
  }

  const int32_t* data_;
  ptrdiff_t stride_;
  int64_t end_;
  int columns_, rows_;
};

void adopt_size(YuvView& yuv, const RgbView& rgb) {
  yuv.width = rgb.width;
  yuv.height = rgb.height;
  yuv.luma_stride = rgb.width;
  yuv.chroma_stride = rgb.width;
}

template <int block_rows>
ChromaPair pair_at(const RgbSamples& samples, int64_t x, int64_t y) {
  const int32_t* p0 = samples.pixel(x, y);
  const int32_t* p1 = samples.pixel(x + 1, y);
  if constexpr (block_rows == 2) {
    return chroma420_of(p0, p1, samples.pixel(x, y + 1), samples.pixel(x + 1, y + 1));
  } else {
    return chroma422_of(p0, p1);
  }
}

template <int block_rows>
void convert(YuvView& yuv, const RgbView& rgb) {
  adopt_size(yuv, rgb);
  const RgbSamples samples(rgb);
  for (int64_t y = 0; y < rgb.height; ++y) {
    for (int64_t x = 0; x < rgb.width; ++x) yuv.luma[y * rgb.width + x] = luma_of(samples.row(y) + 3 * x);
  }
  const int64_t chroma_end = int64_t{rgb.width} * rgb.height / block_rows;
  for (int64_t y = 0; y < rgb.height; y += block_rows) {
    for (int64_t x = 0; x < rgb.width; x += 2) {
      const ChromaPair pair = pair_at<block_rows>(samples, x, y);
      const int64_t place = y / block_rows * rgb.width + x;
      if (place < chroma_end) yuv.chroma[place] = pair.u;
      if (place + 1 < chroma_end) yuv.chroma[place + 1] = pair.v;
    }
  }
}

}  // namespace

void integer_rgb_to_yuv420(YuvView& yuv, const RgbView& rgb) { convert<2>(yuv, rgb); }
void integer_rgb_to_yuv422(YuvView& yuv, const RgbView& rgb) { convert<1>(yuv, rgb); }

}  // namespace biseam
