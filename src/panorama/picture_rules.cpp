#include "panorama/picture_rules.hpp"

#include <cstdint>

#include "panorama/records.hpp"
#include "ring/format.hpp"

namespace biseam {

int32_t check_picture(const BiseamPicture* given, const char* name, int32_t format, int32_t width, int32_t height,
                      ring::PicturePlanes& planes, BiseamError* error) noexcept {
  constexpr BiseamErrorCode kInvalid = BISEAM_INVALID_PICTURE;
  BiseamPicture picture;
  if (!read_record(given, biseam_picture_defaults(), sizeof(BiseamPicture), picture)) {
    return given == nullptr ? report(error, kInvalid, "%s is NULL: must be a picture", name)
                            : report(error, kInvalid, "%s.size is %u: must be %zu, as biseam_picture_defaults gives it", name,
                                     given->size, sizeof(BiseamPicture));
  }
  if (picture.format != format) {
    return report(error, kInvalid, "%s.format is %d: must be the options', %d", name, picture.format, format);
  }
  if (picture.width != width || picture.height != height) {
    return report(error, kInvalid, "%s is %d x %d: must be %d x %d", name, picture.width, picture.height, width, height);
  }
  ring::PictureFormat described;
  if (!ring::describe_format(format, picture.siting, described)) {
    return report(error, kInvalid, "%s.siting is %d: must be 0 (left), 1 (middle) or 2 (top left)", name, picture.siting);
  }
  planes.siting = picture.siting;
  for (int k = 0; k < described.planes; ++k) {
    const ring::PlaneFormat& plane = described.plane[k];
    const int sample = ring::is_words(plane.type) ? 2 : 1;
    if (picture.planes[k] == nullptr) return report(error, kInvalid, "%s.planes[%d] is NULL: must be a plane", name, k);
    if (reinterpret_cast<uintptr_t>(picture.planes[k]) % static_cast<unsigned>(sample) != 0) {
      return report(error, kInvalid, "%s.planes[%d] is odd: samples of 16 bits lie at even addresses", name, k);
    }
    const ptrdiff_t stride = picture.strides[k];
    const ptrdiff_t row = ptrdiff_t{ring::plane_size(width, plane.grid.bits_x)} * ring::bytes_of(plane.type);
    if ((stride < row && stride > -row) || stride % sample != 0) {
      return report(error, kInvalid, "%s.strides[%d] is %td: must be %td bytes or more, up or down%s", name, k, stride, row,
                    sample == 2 ? ", and even" : "");
    }
    planes.first[k] = static_cast<uint8_t*>(picture.planes[k]);
    planes.strides[k] = stride;
  }
  return BISEAM_OK;
}

}  // namespace biseam
