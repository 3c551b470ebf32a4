#pragma once

#include <string>

namespace biseam::tool {

// Whether an MP4, QuickTime or Matroska file ends before its outermost parts do.  Demuxers read such a file up to there and
// say nothing.  Throws Failure (input) when it can't be read.
bool is_cut_short(const std::string& path);

}  // namespace biseam::tool
