#pragma once

#include <cstdint>
#include <string>

namespace biseam::tool {

// Bytes that can still be had: what the system has available, or what the memory limit of the control group leaves, whichever
// is less; the largest number where neither is told.  root: of the files that tell it.
std::uint64_t available_memory(const std::string& root = "");

}  // namespace biseam::tool
