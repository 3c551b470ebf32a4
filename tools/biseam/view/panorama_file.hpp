// What a browser can show: recognised by its content, measured, and checked before it goes onto a page.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "picture/picture.hpp"

namespace biseam::tool {

enum class Media { jpeg, png, mp4, webm };

struct PanoramaFile {
  std::string path;
  Media media = Media::jpeg;
  Size size;                         // pixels
  std::uint64_t bytes = 0;           // of the file
  bool transparent = false;          // a PNG with an alpha channel
  std::vector<std::string> notices;  // what a browser may not like about it, each naming the file
};

// Throws Failure (input) when path is no file, no JPEG, PNG, MP4 or WebM, or damaged: pictures are decoded whole.
PanoramaFile inspect_panorama(const std::string& path);

bool is_video(Media media);
const char* mime_type(Media media);
const char* extension(Media media);  // with the dot

// Throws Failure (input) when the painted panorama or layer of seams does not fit the panorama it is to be laid over.
void check_seams(const PanoramaFile& seams, const PanoramaFile& panorama);

}  // namespace biseam::tool
