#pragma once

#include "biseam/records.h"

namespace biseam {

// Converts between an ImageHeader and a BlendImage; code is destination format | source format << 4.
void convert_image(const void* source, void* destination, int code);

}  // namespace biseam
