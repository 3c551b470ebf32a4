#pragma once

#include <cstdint>

#include "biseam/records.h"
#include "frame/blend/row_sink.hpp"

namespace biseam {

// Converts a blended band's rows to its YUV strip as they come, while they are in the cache.
class BlendedRows {
 public:
  // code: convert_image's.
  BlendedRows(const BlendImage& band, const ImageHeader& strip, int code) : band_(band), strip_(strip), code_(code) {}

  // Null where two rows at a time would not give what convert_image makes of the whole band.
  const RowSink* sink();
  bool have_come() const { return have_come_; }

 private:
  static void take(void* context, int32_t* rows, int y, int count);

  const BlendImage& band_;
  const ImageHeader& strip_;
  int code_;
  bool have_come_ = false;
  RowSink sink_{};
};

}  // namespace biseam
