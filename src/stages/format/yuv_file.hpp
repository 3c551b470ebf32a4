#pragma once

#include <cstdio>

#include "biseam/records.h"

namespace biseam {

// Raw frames: the planes back to back.  Streams are used at their position and stay open.

// Allocates the image and reads formats 0 and 4.  False, and no planes: another format, negative sizes, or memory is short.
// Where the file ends early the samples stay zero.
bool read_yuv_frame(std::FILE* file, ImageHeader& image, int width, int height, int luma_stride, int chroma_stride, int format);

// Writes the planes as the given format has them; the image's own format code is not looked at.  Null planes are left out.
void write_yuv_frame(std::FILE* file, const ImageHeader& image, int format);

}  // namespace biseam
