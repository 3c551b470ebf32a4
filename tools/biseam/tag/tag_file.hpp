// `biseam tag`: a finished panorama of any kind that can be marked.
#pragma once

#include <string>

namespace biseam::tool {

// Marks the picture or clip in from and writes it to to, or replaces it when to is empty or the same file.  False after a
// signal, which leaves everything as it was.  Throws Failure.
bool tag_file(const std::string& from, const std::string& to);

}  // namespace biseam::tool
