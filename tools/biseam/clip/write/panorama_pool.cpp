#include "clip/write/panorama_pool.hpp"

#include <new>

namespace biseam::tool {
namespace {

constexpr int kAlignment = 64;  // what encoders' fastest loops like

}  // namespace

PanoramaPool::PanoramaPool(Size size)
    : size_(size),
      stride_((size.width + kAlignment - 1) / kAlignment * kAlignment),
      buffers_(av_buffer_pool_init(nv12_bytes({stride_, size.height}) + kAlignment, nullptr)) {
  if (!buffers_) throw std::bad_alloc();
}

Libav<AVFrame> PanoramaPool::frame() {
  Libav<AVFrame> frame(av_frame_alloc());
  if (!frame) throw std::bad_alloc();
  frame->buf[0] = av_buffer_pool_get(buffers_.get());
  if (!frame->buf[0]) throw std::bad_alloc();
  frame->format = AV_PIX_FMT_NV12;
  frame->width = size_.width;
  frame->height = size_.height;
  frame->data[0] = frame->buf[0]->data;
  frame->data[1] = frame->data[0] + std::ptrdiff_t(stride_) * size_.height;
  frame->linesize[0] = frame->linesize[1] = stride_;
  return frame;
}

}  // namespace biseam::tool
