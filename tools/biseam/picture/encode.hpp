// Picture files in memory.
#pragma once

#include <cstdint>
#include <vector>

#include "media/libav.hpp"
#include "picture/frame_over.hpp"

namespace biseam::tool {

// In any format that can be converted.  PNG: RGB of 8 bits a sample, or of 16 where the picture has more than 8; gray and
// opacity stay.
std::vector<std::uint8_t> encode_png(const AVFrame& picture);

// Best usual quality, BT.601 with full range.  What is so already keeps its chroma; everything else becomes 4:4:4.
std::vector<std::uint8_t> encode_jpeg(const AVFrame& picture);

// NV12: luma, then the chroma pairs.
std::vector<std::uint8_t> encode_raw(const AVFrame& picture);

// The same for pictures in the tool's own memory.
template <class Picture>
std::vector<std::uint8_t> encode_png(const Picture& picture) {
  return encode_png(*frame_over(picture));
}
template <class Picture>
std::vector<std::uint8_t> encode_jpeg(const Picture& picture) {
  return encode_jpeg(*frame_over(picture));
}
template <class Picture>
std::vector<std::uint8_t> encode_raw(const Picture& picture) {
  return encode_raw(*frame_over(picture));
}

}  // namespace biseam::tool
