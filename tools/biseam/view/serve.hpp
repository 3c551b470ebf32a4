#pragma once

#include <string>

#include "view/page.hpp"

namespace biseam::tool {

// Serves the page and its files, nothing else, on 127.0.0.1 until SIGINT, SIGTERM or SIGHUP; port 0 is any free one.  Prints
// the address once it answers.  Throws Failure: input when a file can't be opened, output when the port can't be had.
void serve(const std::string& page, const PageFiles& files, int port);

}  // namespace biseam::tool
