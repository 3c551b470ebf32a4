// Pictures in other pixel formats.
#pragma once

#include <span>

#include "media/libav.hpp"

namespace biseam::tool {

// Keeps what it needs for the next picture of the same kind.
class FrameConverter {
 public:
  // A picture in another format; one whose layout stays is shared, not copied.  The range of luma and chroma stays, RGB has the
  // full one; RGB becomes BT.601 with full range.  Values are rounded to the nearest, or dithered where YUV gets fewer bits.
  // Opacity is left out.  Throws std::runtime_error when the formats can't be converted.
  Libav<AVFrame> convert(const AVFrame& from, AVPixelFormat to);

  // In its working format.  The range that a format says (yuvj420p) is told by the frame's tag afterwards.
  Libav<AVFrame> to_working(const AVFrame& from);

 private:
  void scale(const AVFrame& from, AVFrame& to);

  struct Kind {
    int width, height, from, to, range, matrix, siting;
    bool operator==(const Kind&) const = default;
  };
  Kind kind_{};
  Libav<SwsContext> scaler_;  // for pictures of the kind
};

// The nearest of some formats that the converter can make of a working one, the same if it is among them; formats that say the
// range count as the plain ones.  AV_PIX_FMT_NONE when there is none.
AVPixelFormat nearest_format(AVPixelFormat working, std::span<const AVPixelFormat> offered);

// Luma and chroma have the full range, by the tag, or because the format is said to or is RGB or gray.
bool is_full_range(const AVFrame& frame);

}  // namespace biseam::tool
