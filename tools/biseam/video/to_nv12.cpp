#include "video/to_nv12.hpp"

#include <stdexcept>

namespace biseam::tool {
namespace {

// Rows of pairs from two planes.
void interleave(const AVFrame& frame, Nv12View& view, Nv12& memory) {
  const std::size_t width = std::size_t(view.width);
  memory.chroma.resize(width * std::size_t(view.height / 2));
  for (int y = 0; y < view.height / 2; ++y) {
    const std::uint8_t* cb = frame.data[1] + std::ptrdiff_t(y) * frame.linesize[1];
    const std::uint8_t* cr = frame.data[2] + std::ptrdiff_t(y) * frame.linesize[2];
    std::uint8_t* pairs = &memory.chroma[std::size_t(y) * width];
    for (std::size_t x = 0; x < width / 2; ++x) {
      pairs[2 * x] = cb[x];
      pairs[2 * x + 1] = cr[x];
    }
  }
  view.chroma = memory.chroma.data();
  view.chroma_stride = view.width;
}

}  // namespace

Nv12View nv12_of(const AVFrame& frame, Nv12& memory) {
  Nv12View view;
  view.width = frame.width & ~1;
  view.height = frame.height & ~1;
  view.luma = frame.data[0];
  view.luma_stride = frame.linesize[0];
  view.chroma = frame.data[1];
  view.chroma_stride = frame.linesize[1];
  switch (frame.format) {
    case AV_PIX_FMT_NV12:
      break;
    case AV_PIX_FMT_YUV420P:
    case AV_PIX_FMT_YUVJ420P:
      interleave(frame, view, memory);
      break;
    default:
      throw std::logic_error("pictures of an unknown format");
  }
  return view;
}

bool can_make_nv12(AVPixelFormat format) {
  return format == AV_PIX_FMT_NV12 || format == AV_PIX_FMT_YUV420P || format == AV_PIX_FMT_YUVJ420P;
}

}  // namespace biseam::tool
