#pragma once

#include <cstddef>
#include <string>

#include "profile/settings.hpp"

namespace biseam::profile {

inline constexpr std::size_t kMostBytes = std::size_t(1) << 20;  // of a profile's text

// A camera profile from its text (TOML); name stands for the file in messages.  Throws Error for an unknown key, and for a
// value of the wrong kind or outside its range, naming file, line and key; also for a text that is longer than kMostBytes or
// nested more deeply than a profile's.
CameraSettings read(const std::string& text, const std::string& name);

}  // namespace biseam::profile
