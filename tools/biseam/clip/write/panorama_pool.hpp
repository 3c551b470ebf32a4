#pragma once

#include "media/libav.hpp"
#include "picture/picture.hpp"

namespace biseam::tool {

// NV12 frames whose memory comes back when its last user lets go.
class PanoramaPool {
 public:
  explicit PanoramaPool(Size size);

  int stride() const { return stride_; }  // of both planes
  Libav<AVFrame> frame();                 // contents undefined

 private:
  Size size_;
  int stride_;
  Libav<AVBufferPool> buffers_;
};

}  // namespace biseam::tool
