#pragma once

#include "biseam/records.h"

namespace biseam {

// Converts between an ImageHeader and a BlendImage; code is destination format | source format << 4.
void convert_image(const void* source, void* destination, int code);

// The converters.  Even sizes are the contract.  At an odd right or lower edge the last blocks still have two columns and two
// rows: what lies past the edge is touched where its address is inside the plane (it is then the next row's first pixel) and
// left alone where it is not.

// Rows and columns are the RGB view's.  The RGB view then takes the YUV view's size and 3 * its width as stride, and is written
// with that stride: a smaller RGB view is the upper left corner of an image as wide as the YUV one.
void yuv420_to_integer_rgb(const YuvView& yuv, RgbView& rgb);
void yuv422_to_integer_rgb(const YuvView& yuv, RgbView& rgb);
void yuv420_to_byte_rgb(const YuvView& yuv, RgbView& rgb);
void yuv422_to_byte_rgb(const YuvView& yuv, RgbView& rgb);

// Rows, columns and stride are the RGB view's.  The YUV view takes its size, and its width as both strides.
void integer_rgb_to_yuv420(YuvView& yuv, const RgbView& rgb);
void integer_rgb_to_yuv422(YuvView& yuv, const RgbView& rgb);

}  // namespace biseam
