// Where a recording shows each lens, as command lines say it.
#pragma once

#include <CLI/CLI.hpp>
#include <cstddef>
#include <string>
#include <vector>

#include "media/lens_streams.hpp"
#include "picture/split.hpp"

namespace biseam::tool {

// The number of a name in place of it, as the option parser reads enumerations.
CLI::Validator one_of(std::vector<std::string> names);

// --layout and --streams.
void add_layout_options(CLI::App& command, Layout& layout, std::string& streams);

// What --streams, or its absence, asks for.  Throws Failure (usage).
StreamChoice choose_streams(const std::string& streams, Layout layout, std::size_t inputs, bool is_raw);

}  // namespace biseam::tool
