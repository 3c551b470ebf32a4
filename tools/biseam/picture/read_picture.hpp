#pragma once

#include <optional>
#include <string>

#include "base/size.hpp"
#include "media/container.hpp"
#include "picture/metadata.hpp"

namespace biseam::tool {

struct PictureFile {
  Libav<AVFrame> picture;  // in a working format, upright: Exif's orientation is applied
  Metadata metadata;
};

// Reads any picture that libav decodes, or raw NV12 of exactly raw_size when that is given.  "-" is standard input.
// What is lost, bits of a sample or metadata that are damaged, is told by a notice.  Throws Failure naming the file.
PictureFile read_picture_file(const std::string& path, std::optional<Size> raw_size = std::nullopt);
PictureFile read_picture_file(Container& opened);
PictureFile read_picture_file(Container& opened, int stream);

// The picture alone.
Libav<AVFrame> read_picture(const std::string& path, std::optional<Size> raw_size = std::nullopt);

// Throws Failure (usage) when the name says that the picture is raw: its size must be given then.
void refuse_raw_name(const std::string& path);

// "1920x960" -> {1920, 960}; throws Failure (usage) on anything else, on zero, odd or giant sizes.
Size parse_size(const std::string& text);

}  // namespace biseam::tool
