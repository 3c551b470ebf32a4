#pragma once

#include <cstddef>
#include <cstdint>

#include "biseam/records.h"

// The two steps to a detail image that the seam search takes in every frame: no heap, and only the samples that are wanted.
namespace biseam {

// Packed pixels of three bytes, rows a stride apart.
struct BytePixels {
  const uint8_t* data;
  int width, height;
  ptrdiff_t stride;
};

// The grays of what copy_strip and resize give, without either image.  strip: record of the strip's size, whose samples are not
// touched; what would lie outside the source repeats its edge, a source without pixels is black.
void gray_of_strip(const BytePixels& source, const BlendImage& strip, int findpath_width, int trans_width, int side,
                   BlendGray& gray, void* memory) noexcept;

// As extract_detail, for grays within +-2^23, as to_gray makes them.  Rows without gaps.
void detail_of_gray(const BlendGray& gray, BlendGray& detail, void* memory) noexcept;

// Bytes that either needs for a gray image of that size, 16-byte aligned.
int64_t strip_memory_bytes(int32_t width, int32_t height) noexcept;

}  // namespace biseam
