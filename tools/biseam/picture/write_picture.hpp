#pragma once

#include <string>

#include "media/libav.hpp"
#include "picture/metadata.hpp"
#include "picture/picture.hpp"

namespace biseam::tool {

// What viewers are told about a picture.
enum class Projection {
  none,            // nothing
  equirectangular  // it is a panorama of the whole sphere; raw samples have no place for that
};

// Writes a picture in any working format by the name's extension, .png, .jpg, .jpeg or .nv12, or raw NV12 to standard output
// under the name "-". A file appears whole or not at all.  Throws Failure naming the file. metadata: of the picture that it was
// made from; what has no place in the file is told by a notice, raw samples have none.
void write_picture(const std::string& path, const AVFrame& picture, Projection projection = Projection::none,
                   const Metadata& metadata = {});
void write_picture(const std::string& path, const Nv12& picture, Projection projection = Projection::none,
                   const Metadata& metadata = {});
void write_picture(const std::string& path, const Rgb& picture, Projection projection = Projection::none,
                   const Metadata& metadata = {});

// The same, but .png alone, which keeps the opacity.
void write_layer(const std::string& path, const Rgba& picture);
void check_layer_name(const std::string& path);

// Throws Failure (usage) when write_picture() would not know the kind, for a check before the work starts.
void check_picture_name(const std::string& path);

}  // namespace biseam::tool
