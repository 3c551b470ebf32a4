#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>

namespace biseam::tool {

// Writes path whole or not at all: into a new file beside it that takes its name once everything is on disk.  A link is
// followed; what is no regular file (a device, a pipe) is written to directly.  Throws Failure (output).
void replace_file(const std::string& path, std::span<const std::uint8_t> bytes);

// The same bytes to standard output, flushed.
void write_standard_output(std::span<const std::uint8_t> bytes);

// The same for what is too large to be held at once: fill() hands its bytes to the function it is given, piece by piece.  When
// it throws, path stays as it was.
using WriteBytes = std::function<void(std::span<const std::uint8_t>)>;
void replace_file(const std::string& path, const std::function<void(const WriteBytes&)>& fill);
void write_standard_output(const std::function<void(const WriteBytes&)>& fill);

}  // namespace biseam::tool
