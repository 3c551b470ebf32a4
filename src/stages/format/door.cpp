// The exported functions of colour conversion and files.
#include "biseam/biseam.h"
#include "stages/format/bitmap_file.hpp"
#include "stages/format/convert.hpp"
#include "stages/format/yuv_file.hpp"

int32_t cvt_image_format(void* source, void* destination, int32_t code) {
  biseam::convert_image(source, destination, code);
  return 0;
}

void* cvt_image_format_pth(void* args) {
  const ConversionArgs& conversion = *static_cast<const ConversionArgs*>(args);
  biseam::convert_image(conversion.source, conversion.destination, conversion.code);
  return nullptr;
}

void rgb2yuv420(YuvView* yuv, RgbView* rgb) { biseam::integer_rgb_to_yuv420(*yuv, *rgb); }
void rgb2yuv422(YuvView* yuv, RgbView* rgb) { biseam::integer_rgb_to_yuv422(*yuv, *rgb); }
void yuv420_2rgb(YuvView* yuv, RgbView* rgb) { biseam::yuv420_to_integer_rgb(*yuv, *rgb); }
void yuv422_2rgb(YuvView* yuv, RgbView* rgb) { biseam::yuv422_to_integer_rgb(*yuv, *rgb); }
void yuv420_2rgbnew(YuvView* yuv, RgbView* rgb) { biseam::yuv420_to_byte_rgb(*yuv, *rgb); }
void yuv422_2rgbnew(YuvView* yuv, RgbView* rgb) { biseam::yuv422_to_byte_rgb(*yuv, *rgb); }

ClImage* clLoadImage(const char* path) { return biseam::load_bitmap(path); }
int32_t clSaveImage(const char* path, const ClImage* image) { return biseam::save_bitmap(path, *image) ? 1 : -1; }

int32_t read_yuv_image(FILE* stream, ImageHeader* image, int32_t width, int32_t height, int32_t stride0, int32_t stride1,
                       int32_t format) {
  return biseam::read_yuv_frame(stream, *image, width, height, stride0, stride1, format) ? 1 : 0;
}

void save_yuv_image(FILE* stream, const ImageHeader* image, int32_t format) { biseam::write_yuv_frame(stream, *image, format); }
