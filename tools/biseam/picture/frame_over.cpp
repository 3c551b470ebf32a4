#include "picture/frame_over.hpp"

#include <new>

#include "media/frame_converter.hpp"
#include "picture/plane.hpp"

namespace biseam::tool {
namespace {

// The planes are only read.
Libav<AVFrame> make_frame(AVPixelFormat format, int width, int height, const std::uint8_t* first, const std::uint8_t* second,
                          int stride) {
  Libav<AVFrame> frame(av_frame_alloc());
  if (!frame) throw std::bad_alloc();
  frame->format = format;
  frame->width = width;
  frame->height = height;
  frame->color_range = AVCOL_RANGE_JPEG;
  frame->chroma_location = AVCHROMA_LOC_CENTER;
  frame->data[0] = const_cast<std::uint8_t*>(first);
  frame->data[1] = const_cast<std::uint8_t*>(second);
  frame->linesize[0] = stride;
  frame->linesize[1] = second ? stride : 0;
  return frame;
}

}  // namespace

Libav<AVFrame> frame_over(const Nv12& picture) {
  return make_frame(AV_PIX_FMT_NV12, picture.width, picture.height, picture.luma.data(), picture.chroma.data(), picture.width);
}
Libav<AVFrame> frame_over(const Rgb& picture) {
  return make_frame(AV_PIX_FMT_RGB24, picture.width, picture.height, picture.bytes.data(), nullptr, 3 * picture.width);
}
Libav<AVFrame> frame_over(const Rgba& picture) {
  return make_frame(AV_PIX_FMT_RGBA, picture.width, picture.height, picture.bytes.data(), nullptr, 4 * picture.width);
}

Rgb rgb_of(const AVFrame& picture) {
  const Libav<AVFrame> frame = FrameConverter().convert(picture, AV_PIX_FMT_RGB24);
  Rgb rgb(frame->width, frame->height);
  const std::size_t row_bytes = std::size_t(rgb.width) * 3;
  copy_plane({frame->data[0], frame->linesize[0], row_bytes, std::size_t(rgb.height)}, rgb.bytes.data(),
             std::ptrdiff_t(row_bytes));
  return rgb;
}

}  // namespace biseam::tool
