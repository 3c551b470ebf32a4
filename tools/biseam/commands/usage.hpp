#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace biseam::tool {

// What is wrong with the command line, in one line: unknown commands and options with the nearest known one.
std::string usage_trouble(const CLI::App& app, const CLI::ParseError& error);

}  // namespace biseam::tool
