#pragma once

#include <cstdint>
#include <vector>

#include "media/libav.hpp"

namespace biseam::tool {

// The planes of a frame one after the other, rows without padding, as FFmpeg's rawvideo has them.
void append_frame(const AVFrame& frame, std::vector<std::uint8_t>& to);

}  // namespace biseam::tool
