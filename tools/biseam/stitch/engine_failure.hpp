#pragma once

#include "base/failure.hpp"
#include "biseam/stitcher.hpp"

namespace biseam::tool {

// What an engine refuses comes from the settings.
inline Failure engine_failure(const Error& error) { return Failure(ExitCode::settings, error.text()); }

}  // namespace biseam::tool
