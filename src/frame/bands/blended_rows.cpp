#include "frame/bands/blended_rows.hpp"

#include <cstddef>

#include "frame/bands/to_yuv_rows.hpp"

namespace biseam {

namespace {

constexpr int kTo420 = BISEAM_YUV420_SEMIPLANAR | BISEAM_RGB << 4;
constexpr int kTo422 = BISEAM_YUV422_SEMIPLANAR | BISEAM_RGB << 4;

bool is_even(int size) { return size % 2 == 0; }

}  // namespace

const RowSink* BlendedRows::sink() {
  // The edge blocks of odd sizes look at what lies behind a row.
  if (!is_even(band_.width) || !is_even(band_.height) || (code_ != kTo420 && code_ != kTo422)) return nullptr;
  sink_ = {take, this};
  return &sink_;
}

void BlendedRows::take(void* context, int32_t* rows, int y, int count) {
  BlendedRows& self = *static_cast<BlendedRows*>(context);
  const int width = self.band_.width, pairs = width / 2;
  const ptrdiff_t stride = self.band_.stride;
  // Strips are packed, their chroma rows as long as those of luma.
  uint8_t* const luma = self.strip_.planes[0] + ptrdiff_t{y} * width;
  for (int row = 0; row < count; ++row) kRgbRowToLuma.best()(rows + row * stride, luma + ptrdiff_t{row} * width, width);
  if (self.code_ == kTo420) {
    uint8_t* const chroma = self.strip_.planes[1] + ptrdiff_t{y / 2} * width;
    kRgbRowsToChroma420.best()(rows, rows + stride, chroma, pairs);
  } else {
    uint8_t* const chroma = self.strip_.planes[1] + ptrdiff_t{y} * width;
    for (int row = 0; row < count; ++row) {
      kRgbRowToChroma422.best()(rows + row * stride, chroma + ptrdiff_t{row} * width, pairs);
    }
  }
  self.have_come_ = true;
}

}  // namespace biseam
