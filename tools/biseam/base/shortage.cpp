#include "base/shortage.hpp"

#include <unistd.h>

#include <atomic>
#include <cstdio>

#include "base/failure.hpp"
#include "base/unfinished.hpp"

namespace biseam::tool {
namespace {

std::atomic<bool> thread_refused = false;

}  // namespace

void end_without_memory(std::size_t bytes) noexcept {
  remove_unfinished_files();
  const char* const over_progress = ::isatty(STDERR_FILENO) != 0 ? "\r\x1b[K" : "";
  char line[96];
  const int length =
      std::snprintf(line, sizeof line, "%sbiseam: not enough memory, %zu bytes more can't be had\n", over_progress, bytes);
  if (::write(STDERR_FILENO, line, std::size_t(length)) < 0) ::_exit(int(ExitCode::system));
  ::_exit(int(ExitCode::system));
}

void note_refused_thread() { thread_refused = true; }
bool was_thread_refused() { return thread_refused; }

}  // namespace biseam::tool
