// The page that shows a panorama.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "view/panorama_file.hpp"

namespace biseam::tool {

// The viewer with places for one panorama.  Throws Failure when the tool was built without it.
std::string_view page_template();

struct PageFiles {
  PanoramaFile panorama;
  const PanoramaFile* seams = nullptr;  // none when null
};

using WriteBytes = std::function<void(std::span<const std::uint8_t>)>;

// The page with the files in it, piece by piece.  Throws Failure (input) when one can't be read or is no longer what was
// inspected.
void write_page(std::string_view page, const PageFiles& files, const WriteBytes& write);

// The page that loads its files from beside itself, under these names.
std::string serving_page(std::string_view page, const PageFiles& files);
std::string served_name(std::string_view role, const PanoramaFile& file);

}  // namespace biseam::tool
