#pragma once

#include "base/failure.hpp"
#include "biseam/stitcher.hpp"

namespace biseam::tool {

// What an engine refuses comes from the settings, if memory is not what is missing.
inline Failure engine_failure(const Error& error) {
  return Failure(error.code() == ErrorCode::out_of_memory ? ExitCode::system : ExitCode::settings, error.text());
}

}  // namespace biseam::tool
