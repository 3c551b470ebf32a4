#pragma once

#include "base/size.hpp"
#include "media/colour.hpp"

namespace biseam::tool {

// Frames whose memory comes back when its last user lets go.
class PanoramaPool {
 public:
  explicit PanoramaPool(Size size, AVPixelFormat format = AV_PIX_FMT_NV12, const Colour& colour = {});

  int stride() const { return strides_[0]; }  // of luma, bytes
  Libav<AVFrame> frame();                     // with the colour's tags; contents undefined

 private:
  Size size_;
  AVPixelFormat format_;
  Colour colour_;
  int strides_[4] = {};
  std::size_t plane_bytes_[4] = {};
  Libav<AVBufferPool> buffers_;
};

}  // namespace biseam::tool
