#include "stages/format/convert.hpp"

#include <cstddef>
#include <cstdint>

#include "stages/format/colour.hpp"

namespace biseam {

namespace {

// A plane read at an edge.  Past its end the last sample of the same component stands in; an empty plane reads as fill.
struct EdgePlane {
  const uint8_t* data;
  int64_t end;
  int step;
  int fill;

  int at(int64_t offset) const {
    if (offset >= end) offset -= ((offset - end) / step + 1) * step;
    return offset < 0 ? fill : data[offset];
  }
};

// One conversion: chroma serves block_rows rows (2 for 4:2:0, 1 for 4:2:2).
template <class Sample, int block_rows>
class Conversion {
 public:
  Conversion(const YuvView& yuv, const RgbView& rgb, int stride)
      : yuv_(yuv),
        luma_{yuv.luma, int64_t{yuv.luma_stride} * yuv.height, 1, 0},
        chroma_{yuv.chroma, int64_t{yuv.chroma_stride} * yuv.height / block_rows, 2, kNeutralChroma},
        out_(static_cast<Sample*>(rgb.data)),
        columns_(rgb.width),
        rows_(rgb.height),
        stride_(stride),
        end_(int64_t{stride} * (int64_t{rgb.height} - 1) + int64_t{3} * rgb.width) {}

  void run() const {
    const bool inside = columns_ <= yuv_.width && rows_ <= yuv_.height;
    for (int64_t y = 0; y < rows_; y += block_rows) {
      for (int64_t x = 0; x < columns_; x += 2) {
        if (inside && y + block_rows <= rows_ && x + 2 <= columns_) {
          convert_block(x, y);
        } else {
          convert_edge_block(x, y);
        }
      }
    }
  }

 private:
  // The upper two pixels first, which settles the result where rows overlap.
  void convert_block(int64_t x, int64_t y) const {
    const uint8_t* chroma = yuv_.chroma + y / block_rows * yuv_.chroma_stride + x;
    const ChromaTerms terms = terms_of(chroma[0], chroma[1]);
    for (int row = 0; row < block_rows; ++row) {
      const uint8_t* luma = yuv_.luma + (y + row) * yuv_.luma_stride + x;
      Sample* rgb = out_ + (y + row) * stride_ + 3 * x;
      store_pixel(luma[0], terms, rgb);
      store_pixel(luma[1], terms, rgb + 3);
    }
  }

  void convert_edge_block(int64_t x, int64_t y) const {
    const int64_t pair = x + y / block_rows * yuv_.chroma_stride;
    const ChromaTerms terms = terms_of(chroma_.at(pair), chroma_.at(pair + 1));
    for (int row = 0; row < block_rows; ++row) {
      convert_edge_pixel(x, y + row, terms);
      convert_edge_pixel(x + 1, y + row, terms);
    }
  }

  void convert_edge_pixel(int64_t x, int64_t y, const ChromaTerms& terms) const {
    const int64_t offset = y * stride_ + 3 * x;
    const bool in_view = x < columns_ && y < rows_;
    if (!in_view && (offset < 0 || offset + 3 > end_)) return;
    store_pixel(luma_.at(y * yuv_.luma_stride + x), terms, out_ + offset);
  }

  const YuvView& yuv_;
  EdgePlane luma_, chroma_;
  Sample* out_;
  int columns_, rows_;
  ptrdiff_t stride_;
  int64_t end_;  // of the samples the view spans
};

template <class Sample, int block_rows>
void convert(const YuvView& yuv, RgbView& rgb) {
  const int stride = static_cast<int>(3u * static_cast<uint32_t>(yuv.width));
  Conversion<Sample, block_rows>(yuv, rgb, stride).run();
  rgb.width = yuv.width;
  rgb.height = yuv.height;
  rgb.stride = stride;
}

}  // namespace

void yuv420_to_integer_rgb(const YuvView& yuv, RgbView& rgb) { convert<int32_t, 2>(yuv, rgb); }
void yuv422_to_integer_rgb(const YuvView& yuv, RgbView& rgb) { convert<int32_t, 1>(yuv, rgb); }
void yuv420_to_byte_rgb(const YuvView& yuv, RgbView& rgb) { convert<uint8_t, 2>(yuv, rgb); }
void yuv422_to_byte_rgb(const YuvView& yuv, RgbView& rgb) { convert<uint8_t, 1>(yuv, rgb); }

}  // namespace biseam
