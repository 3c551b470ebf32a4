// The XMP block (namespace GPano) that tells viewers that a picture is a panorama.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace biseam::tool {

struct Gpano {
  std::string projection;  // empty: no word about it
  bool fits = false;       // its numbers are those of a picture of this size, which may be a part of the sphere
};

// Of a JPEG or PNG file in memory.  Throws std::runtime_error for what is no such file.
Gpano read_gpano(const std::vector<std::uint8_t>& file);

// The file with its picture marked as the whole sphere, equirectangular.  Everything else stays byte for byte.
// Throws std::runtime_error.
std::vector<std::uint8_t> with_gpano(const std::vector<std::uint8_t>& file);

}  // namespace biseam::tool
