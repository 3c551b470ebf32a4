// Between libav's frames and pictures in the tool's own memory, which frames over them must not outlive.
#pragma once

#include "media/libav.hpp"
#include "picture/picture.hpp"

namespace biseam::tool {

Libav<AVFrame> frame_over(const Nv12& picture);
Libav<AVFrame> frame_over(const Rgb& picture);
Libav<AVFrame> frame_over(const Rgba& picture);

// A copy of a picture in any working format, by its matrix and range.
Rgb rgb_of(const AVFrame& picture);

}  // namespace biseam::tool
