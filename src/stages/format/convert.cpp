#include "stages/format/convert.hpp"

namespace biseam {

namespace {

enum Code {
  kRgbToYuv420 = BISEAM_YUV420_SEMIPLANAR | BISEAM_RGB << 4,
  kRgbToYuv422 = BISEAM_YUV422_SEMIPLANAR | BISEAM_RGB << 4,
  kYuv420ToRgb = BISEAM_RGB | BISEAM_YUV420_SEMIPLANAR << 4,
  kYuv422ToRgb = BISEAM_RGB | BISEAM_YUV422_SEMIPLANAR << 4,
  kYuv420ToByteRgb = 1
};

YuvView yuv_view(const void* record) {
  const ImageHeader& image = *static_cast<const ImageHeader*>(record);
  return {image.planes[0], image.planes[1], image.width, image.height, image.strides[0], image.strides[1]};
}

RgbView integer_rgb_view(const void* record) {
  const BlendImage& image = *static_cast<const BlendImage*>(record);
  return {image.data[0], image.width, image.height, image.stride};
}

RgbView byte_rgb_view(const void* record) {
  const ImageHeader& image = *static_cast<const ImageHeader*>(record);
  return {image.planes[0], image.width, image.height, image.strides[0]};
}

void to_yuv(const void* source, const void* destination, void (*converter)(YuvView&, const RgbView&)) {
  YuvView yuv = yuv_view(destination);
  converter(yuv, integer_rgb_view(source));
}

void to_rgb(const void* source, RgbView rgb, void (*converter)(const YuvView&, RgbView&)) { converter(yuv_view(source), rgb); }

}  // namespace

void convert_image(const void* source, void* destination, int code) {
  switch (code) {
    case kRgbToYuv420:
      return to_yuv(source, destination, integer_rgb_to_yuv420);
    case kRgbToYuv422:
      return to_yuv(source, destination, integer_rgb_to_yuv422);
    case kYuv420ToRgb:
      return to_rgb(source, integer_rgb_view(destination), yuv420_to_integer_rgb);
    case kYuv422ToRgb:
      return to_rgb(source, integer_rgb_view(destination), yuv422_to_integer_rgb);
    case kYuv420ToByteRgb:
      return to_rgb(source, byte_rgb_view(destination), yuv420_to_byte_rgb);
    default:
      // Every other code counts as 4:2:2 to byte RGB: there is no error here.
      return to_rgb(source, byte_rgb_view(destination), yuv422_to_byte_rgb);
  }
}

}  // namespace biseam
