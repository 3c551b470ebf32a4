// What a picture's file says besides its samples: Exif with maker notes, IPTC, XMP, a colour profile.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "base/size.hpp"

namespace biseam::tool {

class Metadata {
 public:
  struct Fields;

  Metadata() = default;  // nothing
  explicit Metadata(std::shared_ptr<const Fields> fields) : fields_(std::move(fields)) {}

  int orientation() const;  // Exif's, 1 to 8; 1 where nothing is said: as it is meant to be seen
  const Fields* fields() const { return fields_.get(); }

 private:
  std::shared_ptr<const Fields> fields_;
};

// Of a whole file in memory; nothing of kinds that Exiv2 doesn't know.  Throws std::runtime_error when it is damaged.
Metadata read_metadata(const std::vector<std::uint8_t>& file);

struct MarkedFile {
  std::vector<std::uint8_t> bytes;
  std::vector<std::string> left_out;  // what could not be taken along, and why
};

// A JPEG or PNG file of the given size, which holds no metadata yet, with those of the picture it was made from.  It is upright
// now, and its size is its own; a thumbnail, which shows the other picture, is dropped: programs make their own.  What says
// that the other one was a panorama stays only where keeps_gpano.  Throws std::runtime_error.
MarkedFile with_metadata(std::vector<std::uint8_t> file, const Metadata& metadata, Size size, bool keeps_gpano);

}  // namespace biseam::tool
