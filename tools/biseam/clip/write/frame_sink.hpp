#pragma once

#include <cstdint>
#include <string>

#include "media/libav.hpp"

namespace biseam::tool {

// Where panoramas go, and the packets of all other streams.
class FrameSink {
 public:
  virtual ~FrameSink() = default;

  // In order of time, counted in the time base of the clip.
  virtual void write(const AVFrame& panorama, std::int64_t time, std::int64_t duration) = 0;

  // A packet of another stream of a clip, in that stream's time base.  Takes its contents.
  virtual void copy(int clip, AVPacket& packet) = 0;

  // Everything is out and under the final name.
  virtual void finish() = 0;

  virtual std::string settings_text() const = 0;
};

}  // namespace biseam::tool
