// What a picture must be like that is read from or written to.
#pragma once

#include "biseam/panorama.h"
#include "ring/engine.hpp"

namespace biseam {

// Checks a record against the size and format it has to have, and takes its planes.  name: what the error calls it.
int32_t check_picture(const BiseamPicture* given, const char* name, int32_t format, int32_t width, int32_t height,
                      ring::PicturePlanes& planes, BiseamError* error) noexcept;

}  // namespace biseam
