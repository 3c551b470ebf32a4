#include "base/failure.hpp"

#include <cerrno>
#include <cstdio>
#include <system_error>

#include "base/printable.hpp"

namespace biseam::tool {

Failure system_failure(ExitCode code, const std::string& path, const std::string& what) {
  const int reason = errno;
  return Failure(code, path + ": " + what + ": " + std::generic_category().message(reason));
}

void notice(const std::string& line) { std::fprintf(stderr, "biseam: %s\n", printable(line).c_str()); }

}  // namespace biseam::tool
