#pragma once

#include <string>

#include "profile/settings.hpp"

namespace biseam::profile {

// A camera profile from its text (TOML); name stands for the file in messages.  Throws Error for an unknown key, and for a
// value of the wrong kind or outside its range, naming file, line and key.
CameraSettings read(const std::string& text, const std::string& name);

}  // namespace biseam::profile
