#pragma once

#include "base/status.hpp"
#include "biseam/records.h"

namespace biseam {

// The builders behind the exported functions of the same purpose; see biseam.h for their contracts.
Status describe_image(ImageHeader& header, int width, int height, int luma_stride, int chroma_stride, int format);
void describe_planes(ImageHeader& header, uint8_t* const planes[], const int32_t strides[], int width, int height, int format);
void allocate_image(ImageHeader& header, int width, int height, int luma_stride, int chroma_stride, int format);
void release_image(ImageHeader& header);

// Lay out a record over the samples it already points to.
void describe_blend_image(BlendImage& image, int width, int height);
void describe_gray(BlendGray& image, int width, int height);

// Zero-filled samples; release with release_samples.  On no_memory the record is laid out over null.
Status allocate_blend_image(BlendImage& image, int width, int height);
Status allocate_gray(BlendGray& image, int width, int height);
void release_samples(BlendImage& image);
void release_samples(BlendGray& image);

// Zero-filled temporary of one stage, released with the scope.  Null (false) when memory is short.
template <class Image>
class Temporary {
 public:
  Temporary(int width, int height);
  ~Temporary() { release_samples(image_); }
  Temporary(const Temporary&) = delete;
  Temporary& operator=(const Temporary&) = delete;

  explicit operator bool() const { return ok_; }
  Image& operator*() { return image_; }
  Image* operator->() { return &image_; }

 private:
  Image image_{};
  bool ok_;
};

template <>
inline Temporary<BlendImage>::Temporary(int width, int height)
    : ok_(allocate_blend_image(image_, width, height) == Status::ok) {}
template <>
inline Temporary<BlendGray>::Temporary(int width, int height) : ok_(allocate_gray(image_, width, height) == Status::ok) {}

}  // namespace biseam
