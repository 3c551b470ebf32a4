#include "base/records.hpp"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace biseam {

namespace {

enum class Layout { semi_planar_420, planar_420, semi_planar_422, planar_422, rgb, unknown };

Layout layout_of(int format) {
  switch (format) {
    case BISEAM_YUV420_SEMIPLANAR:
    case BISEAM_YUV420_SEMIPLANAR_VU:
      return Layout::semi_planar_420;
    case BISEAM_YUV420_PLANAR:
      return Layout::planar_420;
    case BISEAM_YUV422_SEMIPLANAR:
    case BISEAM_YUV422_SEMIPLANAR_VU:
      return Layout::semi_planar_422;
    case BISEAM_YUV422_PLANAR:
      return Layout::planar_422;
    case BISEAM_RGB:
      return Layout::rgb;
    default:
      return Layout::unknown;
  }
}

bool is_semi_planar(Layout layout) { return layout == Layout::semi_planar_420 || layout == Layout::semi_planar_422; }
bool is_planar(Layout layout) { return layout == Layout::planar_420 || layout == Layout::planar_422; }

void set_strides(ImageHeader& header, int stride0, int stride1, int stride2) {
  header.strides[0] = stride0;
  header.strides[1] = stride1;
  header.strides[2] = stride2;
}

void set_steps(ImageHeader& header, int step0, int step1, int step2) {
  header.steps[0] = step0;
  header.steps[1] = step1;
  header.steps[2] = step2;
}

void set_planes(ImageHeader& header, uint8_t* plane0, uint8_t* plane1, uint8_t* plane2) {
  header.planes[0] = plane0;
  header.planes[1] = plane1;
  header.planes[2] = plane2;
}

// A plane that lies some bytes into another; null stays null.
uint8_t* behind(uint8_t* plane, int bytes) { return plane == nullptr ? nullptr : plane + bytes; }

// Null when the count is negative, too large for the host, or not to be had.
void* zeroed_bytes(int64_t count) {
  return count < 0 || count > PTRDIFF_MAX ? nullptr : std::calloc(1, static_cast<size_t>(count));
}

uint8_t* zeroed_plane(int64_t bytes) { return static_cast<uint8_t*>(zeroed_bytes(bytes)); }

void allocate_yuv_planes(ImageHeader& header, Layout layout, int luma_stride, int chroma_stride) {
  const int64_t luma = int64_t{luma_stride} * header.height;
  const int64_t chroma = int64_t{chroma_stride} * header.height;
  set_planes(header, zeroed_plane(luma), nullptr, nullptr);
  if (is_planar(layout)) {
    const int64_t plane = layout == Layout::planar_420 ? chroma / 4 : chroma / 2;
    header.planes[1] = zeroed_plane(plane);
    header.planes[2] = zeroed_plane(plane);
  } else {
    header.planes[1] = zeroed_plane(layout == Layout::semi_planar_420 ? chroma / 2 : chroma);
    header.planes[2] = behind(header.planes[1], 1);
  }
}

int32_t* zeroed_samples(int width, int height, int channels) {
  if (width < 0 || height < 0) return nullptr;
  const uint64_t pixels = uint64_t(width) * uint64_t(height);  // below 2^62
  if (pixels > uint64_t{1} << 58) return nullptr;
  return static_cast<int32_t*>(zeroed_bytes(static_cast<int64_t>(pixels) * channels * int64_t{sizeof(int32_t)}));
}

}  // namespace

Status describe_image(ImageHeader& header, int width, int height, int luma_stride, int chroma_stride, int format) {
  header.width = width;
  header.height = height;
  header.format = format;
  const Layout layout = layout_of(format);
  if (is_semi_planar(layout)) {
    set_strides(header, luma_stride, chroma_stride, chroma_stride);
    set_steps(header, 1, 2, 2);
    return Status::ok;
  }
  if (is_planar(layout)) {
    set_strides(header, luma_stride, chroma_stride / 2, chroma_stride / 2);
    set_steps(header, 1, 1, 1);
    return Status::ok;
  }
  return Status::mismatch;
}

void describe_planes(ImageHeader& header, uint8_t* const planes[], const int32_t strides[], int width, int height, int format) {
  header.width = width;
  header.height = height;
  header.planes[0] = planes[0];
  header.strides[0] = strides[0];
  header.format = format;
  const Layout layout = layout_of(format);
  if (layout == Layout::rgb) {
    set_planes(header, planes[0], behind(planes[0], 1), behind(planes[0], 2));
    set_strides(header, strides[0], strides[0], strides[0]);
    set_steps(header, 3, 3, 3);
  } else if (is_semi_planar(layout)) {
    set_planes(header, planes[0], planes[1], behind(planes[1], 1));
    set_strides(header, strides[0], strides[1], strides[1]);
    set_steps(header, 1, 2, 2);
  } else if (is_planar(layout)) {
    // Plane 2 and its stride are the caller's.
    header.planes[1] = planes[1];
    header.strides[1] = strides[1];
    set_steps(header, 1, 1, 1);
  } else {
    set_planes(header, nullptr, nullptr, nullptr);
    set_strides(header, 0, 0, 0);
    set_steps(header, 0, 0, 0);
  }
}

void allocate_image(ImageHeader& header, int width, int height, int luma_stride, int chroma_stride, int format) {
  const Layout layout = layout_of(format);
  if (describe_image(header, width, height, luma_stride, chroma_stride, format) == Status::ok) {
    allocate_yuv_planes(header, layout, luma_stride, chroma_stride);
  } else if (layout == Layout::rgb) {
    uint8_t* base = zeroed_plane(int64_t{luma_stride} * height);
    set_planes(header, base, behind(base, 1), behind(base, 2));
    set_strides(header, luma_stride, luma_stride, luma_stride);
    set_steps(header, 3, 3, 3);
  } else {
    set_planes(header, nullptr, nullptr, nullptr);
    set_strides(header, 0, 0, 0);
    set_steps(header, 0, 0, 0);
  }
}

void release_image(ImageHeader& header) {
  const Layout layout = layout_of(header.format);
  if (layout == Layout::unknown) return;
  std::free(header.planes[0]);
  if (layout != Layout::rgb) std::free(header.planes[1]);
  if (is_planar(layout)) std::free(header.planes[2]);
  set_planes(header, nullptr, nullptr, nullptr);
}

void describe_blend_image(BlendImage& image, int width, int height) {
  image.width = width;
  image.height = height;
  image.channels = 3;
  image.data[1] = image.data[0] == nullptr ? nullptr : image.data[0] + 1;
  image.data[2] = image.data[0] == nullptr ? nullptr : image.data[0] + 2;
  image.stride = static_cast<int32_t>(3u * static_cast<uint32_t>(width));
  for (int32_t& step : image.steps) step = 3;
  image.type = BISEAM_RGB;
}

void describe_gray(BlendGray& image, int width, int height) {
  image.width = width;
  image.height = height;
  image.channels = 1;
  image.stride = width;
  image.step = 1;
  image.type = BISEAM_GRAY;
}

Status allocate_blend_image(BlendImage& image, int width, int height) {
  image.data[0] = zeroed_samples(width, height, 3);
  describe_blend_image(image, width, height);
  return image.data[0] == nullptr ? Status::no_memory : Status::ok;
}

Status allocate_gray(BlendGray& image, int width, int height) {
  image.data = zeroed_samples(width, height, 1);
  describe_gray(image, width, height);
  return image.data == nullptr ? Status::no_memory : Status::ok;
}

void release_samples(BlendImage& image) {
  std::free(image.data[0]);
  image.data[0] = nullptr;
}

void release_samples(BlendGray& image) {
  std::free(image.data);
  image.data = nullptr;
}

}  // namespace biseam
