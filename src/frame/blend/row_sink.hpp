#pragma once

#include <cstdint>

namespace biseam {

// Takes a blended band's rows as they come, so that the band need not be stored: two packed rows at a time, y being the first
// one's number.  The rows' memory is the caller's again after the call.
struct RowSink {
  void (*take)(void* context, int32_t* rows, int y);
  void* context;
};

}  // namespace biseam
