#include "picture/orientation.hpp"

#include <utility>

#include "media/upright.hpp"

namespace biseam::tool {
namespace {

// By Exif's number; it counts from 1.
constexpr Display kDisplays[] = {{},
                                 {},
                                 {.turn = 0, .mirrored = true},
                                 {.turn = 180},
                                 {.turn = 180, .mirrored = true},
                                 {.turn = 90, .mirrored = true},
                                 {.turn = 90},
                                 {.turn = 270, .mirrored = true},
                                 {.turn = 270}};

}  // namespace

Libav<AVFrame> upright(Libav<AVFrame> picture, int orientation) {
  const Display& display = kDisplays[orientation];
  return display.is_plain() ? std::move(picture) : Upright(display, *picture, "picture").apply(*picture);
}

}  // namespace biseam::tool
