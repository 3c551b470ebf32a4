// Clips of drawn pictures.
#pragma once

#include <string>

#include "clip/write/clip_muxer.hpp"
#include "clip/write/encoder.hpp"
#include "clip/write/panorama_pool.hpp"

namespace biseam::tool {

// H.264 without any loss in .mp4, .mov or .mkv, one picture after the other at the same rate.
class LosslessClip {
 public:
  // Throws Failure (output) when nothing can be written under the name.
  LosslessClip(const std::string& path, Size size, AVRational rate);

  // All throw Failure (output).
  void add(const Nv12& picture);
  void finish();  // ends the file and gives it its name

 private:
  void write_encoded();

  ClipMuxer muxer_;
  Encoder encoder_;
  PanoramaPool frames_;
  AVStream& stream_;
  std::int64_t count_ = 0;
  Libav<AVPacket> packet_;
};

}  // namespace biseam::tool
