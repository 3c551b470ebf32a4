#pragma once

#include "media/frame_converter.hpp"
#include "picture/frame_over.hpp"
#include "picture/read_picture.hpp"

namespace biseam::test {

// A picture file's samples as 8 bits and 4:2:0; a last odd row or column is left out.
inline tool::Nv12 nv12_copy(const AVFrame& frame) {
  if (frame.format == AV_PIX_FMT_GBRP) return tool::to_nv12(tool::rgb_of(frame));
  const tool::Libav<AVFrame> from = tool::FrameConverter().convert(frame, AV_PIX_FMT_NV12);
  tool::Nv12 copy(from->width & ~1, from->height & ~1);
  for (std::ptrdiff_t y = 0; y < copy.height; ++y) {
    std::copy_n(from->data[0] + y * from->linesize[0], copy.width, copy.luma.begin() + y * copy.width);
    if (y % 2 != 0) continue;
    std::copy_n(from->data[1] + y / 2 * from->linesize[1], copy.width, copy.chroma.begin() + y / 2 * copy.width);
  }
  return copy;
}

inline tool::Nv12 read_nv12(const std::string& path, std::optional<tool::Size> raw_size = std::nullopt) {
  return nv12_copy(*tool::read_picture(path, raw_size));
}

}  // namespace biseam::test
