#pragma once

#include "biseam/stitcher.hpp"

namespace biseam {

// Makes the errors of the checked interface; texts longer than Error::kTextSize are cut.
struct ErrorWriter {
  __attribute__((format(printf, 2, 3))) static Error write(ErrorCode code, const char* format, ...);
};

}  // namespace biseam
