// Where a recording shows each lens, as command lines say it.
#pragma once

#include <cstddef>
#include <string>

#include "media/lens_streams.hpp"
#include "options/command_line.hpp"
#include "picture/split.hpp"

namespace biseam::tool {

// --layout and --streams.
void add_layout_options(Command& command, Layout& layout, std::string& streams);

// What --streams, or its absence, asks for.  Throws Failure (usage).
StreamChoice choose_streams(const std::string& streams, Layout layout, std::size_t inputs, bool is_raw);

}  // namespace biseam::tool
