// Picture files in memory.
#pragma once

#include <cstdint>
#include <vector>

#include "picture/picture.hpp"

namespace biseam::tool {

std::vector<std::uint8_t> encode_png(const Rgb& picture);
std::vector<std::uint8_t> encode_png(const Rgba& picture);

// Best usual quality; 4:2:0 as given, or 4:4:4 from RGB.
std::vector<std::uint8_t> encode_jpeg(const Nv12& picture);
std::vector<std::uint8_t> encode_jpeg(const Rgb& picture);

// Luma, then the chroma pairs.
std::vector<std::uint8_t> encode_raw(const Nv12& picture);

}  // namespace biseam::tool
