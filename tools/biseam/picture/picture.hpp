// The two kinds of pictures the tool works on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/size.hpp"

namespace biseam::tool {

// 4:2:0: a luma plane, and a plane of interleaved Cb, Cr pairs of half the size.  Rows without padding, width and height
// even, BT.601 full range as in JPEG files; a chroma sample is the mean of its 2 x 2 block.
struct Nv12 {
  int width = 0, height = 0;
  std::vector<std::uint8_t> luma, chroma;

  Nv12() = default;
  Nv12(int w, int h) { resize(w, h); }

  // What the planes hold is undefined afterwards.
  void resize(int w, int h) {
    width = w;
    height = h;
    luma.resize(std::size_t(w) * std::size_t(h));
    chroma.resize(luma.size() / 2);
  }
};

// Planes that belong to someone else, rows as far apart as the strides say.
struct Nv12View {
  int width = 0, height = 0;
  const std::uint8_t *luma = nullptr, *chroma = nullptr;
  std::ptrdiff_t luma_stride = 0, chroma_stride = 0;  // bytes

  Nv12View() = default;
  Nv12View(const Nv12& picture)
      : width(picture.width),
        height(picture.height),
        luma(picture.luma.data()),
        chroma(picture.chroma.data()),
        luma_stride(picture.width),
        chroma_stride(picture.width) {}
};

// Packed R, G, B bytes, rows without padding, any size.
struct Rgb {
  int width = 0, height = 0;
  std::vector<std::uint8_t> bytes;

  Rgb() = default;
  Rgb(int w, int h) : width(w), height(h), bytes(std::size_t(w) * std::size_t(h) * 3) {}
};

// Packed R, G, B, opacity bytes, rows without padding; transparent black at first.
struct Rgba {
  int width = 0, height = 0;
  std::vector<std::uint8_t> bytes;

  Rgba() = default;
  Rgba(int w, int h) : width(w), height(h), bytes(std::size_t(w) * std::size_t(h) * 4) {}
};

// Bytes of a raw NV12 picture.
constexpr std::size_t nv12_bytes(Size size) { return std::size_t(size.width) * std::size_t(size.height) * 3 / 2; }

// Full-range BT.601, rounded to nearest; y, cb, cr and r, g, b are three bytes each.
void rgb_to_ycc(const std::uint8_t* rgb, std::uint8_t* ycc);
void ycc_to_rgb(const std::uint8_t* ycc, std::uint8_t* rgb);

// Chroma is averaged before it is rounded.  A last odd row or column is dropped.
Nv12 to_nv12(const Rgb& picture);

// A chroma sample serves its 2 x 2 block.
Rgb to_rgb(const Nv12& picture);

}  // namespace biseam::tool
