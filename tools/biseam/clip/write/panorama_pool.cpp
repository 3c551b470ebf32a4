#include "clip/write/panorama_pool.hpp"

extern "C" {
#include <libavutil/imgutils.h>
}

#include <new>
#include <numeric>
#include <stdexcept>

namespace biseam::tool {
namespace {

constexpr int kAlignment = 64;  // what encoders' fastest loops like

int aligned(int bytes) { return (bytes + kAlignment - 1) / kAlignment * kAlignment; }

}  // namespace

PanoramaPool::PanoramaPool(Size size, AVPixelFormat format, const Colour& colour)
    : size_(size), format_(format), colour_(colour) {
  std::ptrdiff_t strides[4] = {};
  bool fits = av_image_fill_linesizes(strides_, format, size.width) >= 0;
  for (int k = 0; k < 4; ++k) strides[k] = strides_[k] = aligned(strides_[k]);
  fits = fits && av_image_fill_plane_sizes(plane_bytes_, format, size.height, strides) >= 0;
  if (!fits) throw std::runtime_error("panoramas of " + size_text(size) + " can't be held");
  buffers_.reset(av_buffer_pool_init(std::accumulate(plane_bytes_, plane_bytes_ + 4, std::size_t(kAlignment)), nullptr));
  if (!buffers_) throw std::bad_alloc();
}

Libav<AVFrame> PanoramaPool::frame() {
  Libav<AVFrame> frame(av_frame_alloc());
  if (!frame) throw std::bad_alloc();
  frame->buf[0] = av_buffer_pool_get(buffers_.get());
  if (!frame->buf[0]) throw std::bad_alloc();
  frame->format = format_;
  frame->width = size_.width;
  frame->height = size_.height;
  set_colour(*frame, colour_);
  std::uint8_t* at = frame->buf[0]->data;
  for (int k = 0; k < 4 && plane_bytes_[k] > 0; ++k) {
    frame->data[k] = at;
    frame->linesize[k] = strides_[k];
    at += plane_bytes_[k];
  }
  return frame;
}

}  // namespace biseam::tool
