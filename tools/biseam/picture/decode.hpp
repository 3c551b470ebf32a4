// Pictures in any format that libav recognises by its content.
#pragma once

#include <string>

#include "media/container.hpp"

namespace biseam::tool {

struct DecodedPicture {
  Libav<AVFrame> frame;  // in a working format
  std::string loss;      // "its samples of 16 bits are rounded to 12", or nothing
};

// The first picture of a still, or of a film, as it is to be shown, its samples as they are where the engine takes their
// format, else as the working format says.  Chroma without a told place lies in the middle, as in JPEG files.  A damaged or
// truncated picture is refused.
DecodedPicture decode_picture(Container& source);
DecodedPicture decode_picture(Container& source, int stream);

}  // namespace biseam::tool
