// How a clip wants its pictures to be shown.
#pragma once

#include <optional>
#include <string>

#include "base/size.hpp"
#include "media/libav.hpp"

namespace biseam::tool {

struct Display {
  int turn = 0;            // clockwise: 0, 90, 180 or 270 degrees
  bool mirrored = false;   // left and right exchanged, after the turn
  bool is_askew = false;   // turned in a way that can't be followed; then both are as if nothing was said
  AVRational pixel{1, 1};  // width and height of a recorded pixel

  bool is_plain() const { return turn == 0 && !mirrored && pixel.num == pixel.den; }
};

// What the stream says, and the frame where there is one.
Display display_of(AVFormatContext& clip, AVStream& stream, AVFrame* frame = nullptr);

// The size of a recorded picture in square pixels, before it is turned: one side stays, the other one grows to the nearest
// multiple of 4, which two circles side by side need.  None where it would be out of all proportion.
std::optional<Size> square_size(Size recorded, AVRational pixel);

// What is done to pictures of the size, for a notice.
std::string display_text(const Display& display, Size recorded);

}  // namespace biseam::tool
