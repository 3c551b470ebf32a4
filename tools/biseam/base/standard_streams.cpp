#include "base/standard_streams.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "base/failure.hpp"

namespace biseam::tool {

void hold_standard_streams() {
  // A new descriptor is the lowest free one, so they are filled in this order; each opened for what nobody does with it.
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    const bool is_closed = ::fcntl(descriptor, F_GETFD) < 0 && errno == EBADF;
    if (is_closed && ::open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY) != descriptor) {
      ::_exit(int(ExitCode::output));  // there is nobody to tell
    }
  }
}

void flush_standard_output() {
  errno = 0;
  const bool flushed = std::fflush(stdout) == 0;
  if (flushed && std::ferror(stdout) == 0) return;
  if (errno == 0) errno = EIO;  // an earlier write failed, which left no reason
  throw system_failure(ExitCode::output, "standard output", "can't be written");
}

}  // namespace biseam::tool
