// Pictures of clips as they are meant to be shown.
#pragma once

#include <memory>
#include <string>

#include "media/container.hpp"
#include "media/display.hpp"

namespace biseam::tool {

// Scales pictures of one kind to square pixels and turns them.  Samples keep their format where it can be turned; else, where
// chroma has fewer columns than rows, they become 4:4:4.
class Upright {
 public:
  // name: of the clip.  Throws Failure (input) where pixels are out of all proportion.
  Upright(const Display& display, const AVFrame& recorded, const std::string& name);

  // Throws Failure (input) where libav can't scale the format.
  Libav<AVFrame> apply(const AVFrame& recorded);

 private:
  Libav<AVFrame> scale(const AVFrame& recorded);
  Libav<AVFrame> turn(const AVFrame& square) const;

  const Display display_;
  const std::string name_;
  Size square_;
  AVPixelFormat format_;  // after scaling
  Libav<SwsContext> scaler_;
};

// For the pictures of a clip's stream, the first one given; null where they are shown as they are recorded.  A notice says
// what will be done, or that a turn by no quarters can't be, unless it was said before.  Throws as Upright does.
std::unique_ptr<Upright> make_upright(const Container& clip, AVStream& stream, AVFrame& first, bool was_said = false);

}  // namespace biseam::tool
