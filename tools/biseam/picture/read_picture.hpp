#pragma once

#include <optional>
#include <string>

#include "picture/picture.hpp"

namespace biseam::tool {

// Reads any picture that libav decodes, or raw NV12 of exactly raw_size when that is given.  "-" is standard input.
// Throws Failure naming the file.
Nv12 read_picture(const std::string& path, std::optional<Size> raw_size = std::nullopt);

// Throws Failure (usage) when the name says that the picture is raw: its size must be given then.
void refuse_raw_name(const std::string& path);

// "1920x960" -> {1920, 960}; throws Failure (usage) on anything else, on zero, odd or giant sizes.
Size parse_size(const std::string& text);

}  // namespace biseam::tool
