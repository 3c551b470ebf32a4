#pragma once

#include <string>

#include "camera/settings.hpp"

namespace biseam::tool {

// Reads a camera profile (TOML).  Throws Failure: input when the file can't be read, settings when it holds an unknown key or
// a value of the wrong kind or outside its range, naming file, line and key.
CameraSettings read_profile(const std::string& path);

// The same from text; name stands for the file in messages.
CameraSettings parse_profile(const std::string& text, const std::string& name);

}  // namespace biseam::tool
