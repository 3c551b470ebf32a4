// Planes of samples in memory: copied, and chroma put together to pairs.
#pragma once

#include <cstddef>
#include <cstdint>

#include "picture/picture.hpp"

namespace biseam::tool {

struct PlaneView {
  const std::uint8_t* data = nullptr;
  std::ptrdiff_t stride = 0;        // bytes
  std::size_t width = 0, rows = 0;  // width: bytes
};

inline PlaneView luma_of(const Nv12View& picture) {
  return {picture.luma, picture.luma_stride, std::size_t(picture.width), std::size_t(picture.height)};
}

inline PlaneView chroma_of(const Nv12View& picture) {
  return {picture.chroma, picture.chroma_stride, std::size_t(picture.width), std::size_t(picture.height) / 2};
}

// Rows of the copy are stride bytes apart.
void copy_plane(const PlaneView& from, std::uint8_t* to, std::ptrdiff_t stride);

// Two planes of chroma samples with their strides in bytes.
struct ChromaPlanes {
  const std::uint8_t *cb = nullptr, *cr = nullptr;
  std::ptrdiff_t cb_stride = 0, cr_stride = 0;
};

// Cb, Cr pairs from two planes.  pairs: width bytes a row, so half as many samples of each.
void join_chroma(const ChromaPlanes& from, std::size_t width, std::size_t rows, std::uint8_t* pairs);

}  // namespace biseam::tool
