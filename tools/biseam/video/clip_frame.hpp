#pragma once

#include <cstdint>
#include <memory>

#include "libav.hpp"

namespace biseam::tool {

// A decoded picture; times count in the time base of its clip.
struct ClipFrame {
  std::shared_ptr<const AVFrame> picture;
  std::int64_t time = 0, duration = 0;
  bool repeated = false;  // the previous picture again, in place of a damaged one
};

}  // namespace biseam::tool
