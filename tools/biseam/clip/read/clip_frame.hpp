#pragma once

#include <cstdint>
#include <memory>

#include "media/libav.hpp"

namespace biseam::tool {

// A decoded picture; times count in the time base of its clip.  A picture in place of a damaged one is the very object of the
// frame before.
struct ClipFrame {
  std::shared_ptr<const AVFrame> picture;
  std::int64_t time = 0, duration = 0;
};

}  // namespace biseam::tool
