// Where the channels of pictures lie.
#pragma once

#include "camera/camera.hpp"
#include "ring/format.hpp"
#include "ring/strip/strip_memory.hpp"

namespace biseam::ring {

// Channels of a format in the order luma, Cb, Cr, and the planes they lie in.
struct Channel {
  int plane, offset, step;  // samples
};

Channel find_channel(const PictureFormat& format, int channel) noexcept;

// What the strips of a camera's pictures are made from.
StripConfig strip_config(const Camera& camera, const PictureFormat& format, StripShape shape) noexcept;

}  // namespace biseam::ring
