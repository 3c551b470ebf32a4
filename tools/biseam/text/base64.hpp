#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace biseam::tool {

// With padding, without line breaks.
std::string base64(std::span<const std::uint8_t> bytes);

}  // namespace biseam::tool
