#include <cstddef>
#include <cstdint>

#include "frame/bands/rows.hpp"
#include "stages/format/convert.hpp"

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
        chroma_{yuv.chroma, int64_t{yuv.chroma_stride} * yuv.height / block_rows, 2, 128},
        out_(static_cast<Sample*>(rgb.data)),
        columns_(rgb.width),
        rows_(rgb.height),
        stride_(stride),
        end_(int64_t{stride} * (int64_t{rgb.height} - 1) + int64_t{3} * rgb.width) {}

  void run() const {
    const bool inside = columns_ <= yuv_.width && rows_ <= yuv_.height;
    for (int64_t y = 0; y < rows_; y += block_rows) {
      const int pairs = inside && y + block_rows <= rows_ ? columns_ / 2 : 0;
      convert_pairs(y, pairs);
      for (int64_t x = int64_t{2} * pairs; x < columns_; x += 2) convert_edge_block(x, y);
    }
  }

 private:
  void convert_pairs(int64_t y, int pairs) const {
    const uint8_t* luma = yuv_.luma + y * yuv_.luma_stride;
    const uint8_t* chroma = yuv_.chroma + y / block_rows * yuv_.chroma_stride;
    Sample* rgb = out_ + y * stride_;
    if (pairs < 1) return;
    if constexpr (block_rows == 2) {
      yuv420_rows_to_rgb(luma, luma + yuv_.luma_stride, chroma, rgb, rgb + stride_, pairs);
    } else {
      yuv422_row_to_rgb(luma, chroma, rgb, pairs);
    }
  }

  void convert_edge_block(int64_t x, int64_t y) const {
    const int64_t pair = x + y / block_rows * yuv_.chroma_stride;
    const int u = chroma_.at(pair);
    const int v = chroma_.at(pair + 1);
    for (int row = 0; row < block_rows; ++row) {
      convert_edge_pixel(x, y + row, u, v);
      convert_edge_pixel(x + 1, y + row, u, v);
    }
  }

  void convert_edge_pixel(int64_t x, int64_t y, int u, int v) const {
    const int64_t offset = y * stride_ + 3 * x;
    const bool in_view = x < columns_ && y < rows_;
    if (!in_view && (offset < 0 || offset + 3 > end_)) return;
    yuv_to_rgb_pixel(luma_.at(y * yuv_.luma_stride + x), u, v, out_ + offset);
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
