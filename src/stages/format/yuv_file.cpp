#include "stages/format/yuv_file.hpp"

#include <cstddef>
#include <cstdint>

#include "base/records.hpp"

namespace biseam {

namespace {

bool holds(const uint8_t* plane, int64_t bytes) { return bytes == 0 || (bytes > 0 && plane != nullptr); }

void read_plane(std::FILE* file, uint8_t* plane, int64_t bytes) {
  // A short read is not an error here; the rest of the plane is zero.
  if (bytes > 0 && std::fread(plane, 1, static_cast<size_t>(bytes), file) == 0) return;
}

void write_plane(std::FILE* file, const uint8_t* plane, int64_t bytes) {
  if (plane != nullptr && bytes > 0) std::fwrite(plane, 1, static_cast<size_t>(bytes), file);
}

// Luma, and count planes of chroma that take a part each of what full chroma rows would.  Both take the stride of plane 1.
void write_planes(std::FILE* file, const ImageHeader& image, int count, int part) {
  write_plane(file, image.planes[0], int64_t{image.height} * image.strides[0]);
  for (int k = 1; k <= count; ++k) write_plane(file, image.planes[k], int64_t{image.height} * image.strides[1] / part);
}

// Packed RGB is written as if the stride counted pixels.  An image whose stride counts bytes ends after a third of that: zeros
// make up the rest.
void write_packed_rgb(std::FILE* file, const ImageHeader& image) {
  const int64_t stride_rows = int64_t{image.height} * image.strides[0];
  const bool stride_is_bytes = image.steps[0] == 3 && image.strides[0] >= int64_t{3} * image.width;
  if (!stride_is_bytes) return write_plane(file, image.planes[0], 3 * stride_rows);
  write_plane(file, image.planes[0], stride_rows);
  if (image.planes[0] == nullptr) return;
  for (int64_t i = 0; i < 2 * stride_rows; ++i) std::fputc(0, file);
}

}  // namespace

bool read_yuv_frame(std::FILE* file, ImageHeader& image, int width, int height, int luma_stride, int chroma_stride,
                    int format) {
  allocate_image(image, width, height, luma_stride, chroma_stride, format);
  const int64_t luma_bytes = int64_t{height} * luma_stride;
  const int64_t chroma_rows_bytes = int64_t{chroma_stride} * height;
  const int64_t chroma_bytes = format == BISEAM_YUV420_SEMIPLANAR ? chroma_rows_bytes / 2 : chroma_rows_bytes;
  const bool readable = format == BISEAM_YUV420_SEMIPLANAR || format == BISEAM_YUV422_SEMIPLANAR;
  if (!readable || !holds(image.planes[0], luma_bytes) || !holds(image.planes[1], chroma_bytes)) {
    release_image(image);
    return false;
  }
  read_plane(file, image.planes[0], luma_bytes);
  read_plane(file, image.planes[1], chroma_bytes);
  image.planes[2] = image.planes[1] == nullptr ? nullptr : image.planes[1] + 1;
  return true;
}

void write_yuv_frame(std::FILE* file, const ImageHeader& image, int format) {
  switch (format) {
    case BISEAM_YUV420_SEMIPLANAR:
    case BISEAM_YUV420_SEMIPLANAR_VU:
      return write_planes(file, image, 1, 2);
    case BISEAM_YUV420_PLANAR:
      return write_planes(file, image, 2, 4);
    case BISEAM_YUV422_SEMIPLANAR:
    case BISEAM_YUV422_SEMIPLANAR_VU:
      return write_planes(file, image, 1, 1);
    case BISEAM_YUV422_PLANAR:
      return write_planes(file, image, 2, 2);
    case BISEAM_RGB:
      return write_packed_rgb(file, image);
    default:
      return;
  }
}

}  // namespace biseam
