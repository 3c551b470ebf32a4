// Where the XMP block stands in JPEG and PNG files.  Exiv2 makes the block; if it wrote the file as well, it would write Exif
// and text anew and cut off what follows the end of a PNG file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace biseam::tool {

// The file with the block in place of the one it had; every other byte stays.  Throws std::runtime_error when the file is
// neither JPEG nor PNG, or the block too long for it.
std::vector<std::uint8_t> place_xmp(const std::vector<std::uint8_t>& file, const std::string& block);

}  // namespace biseam::tool
