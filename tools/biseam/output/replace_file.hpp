#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace biseam::tool {

// Writes path whole or not at all: into a new file beside it that takes its name once everything is on disk.  A link is
// followed; what is no regular file (a device, a pipe) is written to directly.  Throws Failure (output).
void replace_file(const std::string& path, std::span<const std::uint8_t> bytes);

// The same bytes to standard output, flushed.
void write_standard_output(std::span<const std::uint8_t> bytes);

}  // namespace biseam::tool
