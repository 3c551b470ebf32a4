#pragma once

#include <cstdint>

#include "biseam/records.h"
#include "frame/blend/row_sink.hpp"

namespace biseam {

// Converts a blended band's rows to its YUV strip, of even sizes, as they come: while they are in the cache.
class BlendedRows {
 public:
  // format: the strip's, U, V order.
  BlendedRows(const ImageHeader& strip, int format) : strip_(strip), format_(format) {}

  RowSink sink() { return {take, this}; }

 private:
  static void take(void* context, int32_t* rows, int y);

  const ImageHeader& strip_;
  int format_;
};

}  // namespace biseam
