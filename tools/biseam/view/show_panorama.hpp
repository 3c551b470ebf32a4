// `biseam view`: a panorama's page, in a file or served.
#pragma once

#include <optional>
#include <string>

namespace biseam::tool {

struct ViewJob {
  std::string panorama;
  std::string seams;        // picture of bands and seams to lie over it; none when empty
  std::string page;         // file to be written, "-" is standard output
  std::optional<int> port;  // served in place of written; 0: any free port
};

// Throws Failure.  Serving ends with a signal.
void show_panorama(const ViewJob& job);

}  // namespace biseam::tool
