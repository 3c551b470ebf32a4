#pragma once

#include <string>

#include "profile/settings.hpp"

namespace biseam::profile {

// The text (TOML) from which read() gives the same settings, every number to the bit; what is open is left out.  comment: lines
// above them, without their number signs; empty: none.
std::string write(const CameraSettings& settings, const std::string& comment = "");

}  // namespace biseam::profile
