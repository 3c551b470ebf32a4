// Files with a video stream for each lens.
#pragma once

#include <array>
#include <optional>

#include "media/container.hpp"

namespace biseam::tool {

// Their numbers, counted from 0 among all streams of the file; lens 0's first.
using LensStreams = std::array<int, 2>;

struct StreamChoice {
  std::optional<LensStreams> wanted;
  bool may_be_found = true;  // by find_lens_streams(), where none are wanted
};

// The file's video streams where there are two of the same size, and neither can hold two circles side by side or one above the
// other: no side is shown twice as long as the other.  Covers don't count.
std::optional<LensStreams> find_lens_streams(const Container& file);

// Those that are to be read, with a notice where they were found; none where one stream has the pictures of both lenses.
// Throws Failure (input) where they are not two video streams of the same size, or not in a file that can be opened twice.
std::optional<LensStreams> choose_lens_streams(const Container& file, const StreamChoice& choice);

}  // namespace biseam::tool
