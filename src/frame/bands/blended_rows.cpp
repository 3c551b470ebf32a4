#include "frame/bands/blended_rows.hpp"

#include <cstddef>

#include "stages/format/convert.hpp"

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
  BlendImage pair = self.band_;
  pair.data[0] = rows;
  pair.height = count;
  // Strips are packed, their chroma rows as long as those of luma.
  const int chroma_row = self.code_ == kTo420 ? y / 2 : y;
  ImageHeader to = self.strip_;
  to.planes[0] += ptrdiff_t{y} * pair.width;
  to.planes[1] += ptrdiff_t{chroma_row} * pair.width;
  convert_image(&pair, &to, self.code_);
  self.have_come_ = true;
}

}  // namespace biseam
