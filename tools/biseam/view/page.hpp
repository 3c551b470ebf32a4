// The page that shows a panorama.
#pragma once

#include <string>
#include <string_view>

#include "output/replace_file.hpp"
#include "view/panorama_file.hpp"

namespace biseam::tool {

// The viewer with places for one panorama.  Throws Failure when the tool was built without it.
std::string_view page_template();

struct PageFiles {
  PanoramaFile panorama;
  const PanoramaFile* seams = nullptr;  // none when null
};

// The page with the files in it.  Throws Failure (input) when one can't be read or is no longer what was inspected.
void write_page(std::string_view page, const PageFiles& files, const WriteBytes& write);

// The page that loads its files from beside itself, under these names.
std::string serving_page(std::string_view page, const PageFiles& files);
std::string served_name(std::string_view role, const PanoramaFile& file);

}  // namespace biseam::tool
