// What is wrong with a command line, in one line.
#pragma once

#include <string>
#include <vector>

namespace biseam::tool {

// There is no such command or option, but maybe one that is meant.  An empty command is one that wasn't given, or the program
// itself, which has options too.
std::string command_trouble(const std::string& given, const std::vector<std::string>& known);
std::string option_trouble(std::string given, const std::string& command, const std::vector<std::string>& known);

// What the parser says of a value that is no number, and of too many values or too few, said plainly.
std::string conversion_trouble(const std::string& line);
std::string count_trouble(const std::string& line);

}  // namespace biseam::tool
